#pragma once

#include <string_view>

#include "service/base/Id.h"
#include "service/base/Text.h"

namespace quilloservice {

/// Programs need no registration, so a client ID is a name: printable text of up to 256 bytes.
struct ClientTag {
    static constexpr std::size_t kMaxBytes = 256;
    static bool IsValid(std::string_view text) {
        return !text.empty() && text.size() <= kMaxBytes && IsPrintableText(text);
    }
};

using ClientId = Id<ClientTag>;

}  // namespace quilloservice
