#pragma once

#include <string>
#include <string_view>

#include "quillocommon/Guid.h"

namespace quillosdk {

/// The path to what belongs to one thing of the service: "/v1/folders/", its ID, "/children". Made
/// in one piece.
[[nodiscard]] inline std::string PathTo(std::string_view things, quillocommon::Guid const& id,
                                        std::string_view part) {
    auto const text = id.AsText();
    std::string path;
    path.reserve(things.size() + text.size() + part.size());
    path.append(things).append(text.data(), text.size()).append(part);
    return path;
}

}  // namespace quillosdk
