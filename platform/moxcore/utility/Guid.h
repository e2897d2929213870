#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

#include "moxcore/Export.h"

namespace moxcore::utility {

/// A 16-byte identifier of a service object. All zero means none. A plain value; any thread.
class MOXCORE_API Guid {
public:
    constexpr Guid() = default;

    /// Parses the 8-4-4-4-12 form, letters in either case. Malformed text gives the null Guid;
    /// never throws.
    explicit Guid(std::string_view text) noexcept;

    /// A random Guid (RFC 4122, version 4).
    [[nodiscard]] static Guid CreateUnique();

    /// Whether it is all zero, which means none.
    [[nodiscard]] constexpr bool IsNull() const noexcept { return *this == Guid(); }

    /// The lower-case 8-4-4-4-12 form.
    using Text = std::array<char, 36>;
    /// The lower-case form, without allocation.
    [[nodiscard]] Text AsText() const noexcept;
    /// The lower-case form.
    [[nodiscard]] std::string AsStdString() const;

    /// The bytes in the order of the text.
    [[nodiscard]] constexpr std::array<std::uint8_t, 16> const& Bytes() const noexcept {
        return bytes;
    }

    friend constexpr auto operator<=>(Guid const&, Guid const&) noexcept = default;

private:
    std::array<std::uint8_t, 16> bytes{};
};

/// Writes the form of AsStdString.
MOXCORE_API std::ostream& operator<<(std::ostream& out, Guid const& guid);

}  // namespace moxcore::utility

/// For unordered containers.
template <>
struct std::hash<moxcore::utility::Guid> {
    std::size_t operator()(moxcore::utility::Guid const& guid) const noexcept {
        return std::hash<std::string_view>()(
            {reinterpret_cast<char const*>(guid.Bytes().data()), guid.Bytes().size()});
    }
};
