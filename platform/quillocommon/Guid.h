#pragma once

#include <string>
#include <string_view>

#include "moxcore/utility/Guid.h"
#include "quillocommon/Export.h"

namespace quillocommon {

/// The service's own identifier type. It meets moxcore's only in its string form. A plain value;
/// any thread.
class QUILLOSERVICES_API Guid {
public:
    Guid() = default;

    /// Parses the 8-4-4-4-12 form; malformed text gives the all-zero Guid.
    explicit Guid(std::string_view text) : bytes(text) {}

    [[nodiscard]] static Guid CreateUnique();

    /// The lower-case 8-4-4-4-12 form.
    using Text = moxcore::utility::Guid::Text;
    [[nodiscard]] Text AsText() const { return bytes.AsText(); }
    [[nodiscard]] std::string AsString() const { return bytes.AsStdString(); }

    [[nodiscard]] bool IsNull() const { return bytes.IsNull(); }

    friend bool operator==(Guid const&, Guid const&) = default;

private:
    moxcore::utility::Guid bytes;
};

}  // namespace quillocommon
