#pragma once

#include <compare>
#include <memory>
#include <string>
#include <string_view>

#include "moxcore/Export.h"

namespace moxcore::utility {

/// A text that never changes, so that copies share it. The null string is none at all and differs
/// from the empty one. A plain value; any thread.
class MOXCORE_API ImmutableString {
public:
    /// The null string.
    ImmutableString() = default;

    explicit ImmutableString(std::string_view text);

    [[nodiscard]] bool IsNull() const noexcept { return text == nullptr; }

    /// The text; of the null string, the empty one.
    [[nodiscard]] std::string const& AsStdString() const noexcept;

    /// By content; the null string comes first.
    friend MOXCORE_API std::strong_ordering operator<=>(ImmutableString const& left,
                                                        ImmutableString const& right) noexcept;
    friend MOXCORE_API bool operator==(ImmutableString const& left,
                                       ImmutableString const& right) noexcept;

private:
    std::shared_ptr<std::string const> text;
};

}  // namespace moxcore::utility
