#pragma once

#include "moxcore/utility/Guid.h"
#include "quillocommon/Guid.h"

namespace quillomoxui::model {

// The two identifier types meet in their string form only.

[[nodiscard]] inline quillocommon::Guid ToServiceGuid(moxcore::utility::Guid const& id) {
    auto const text = id.AsText();
    return quillocommon::Guid({text.data(), text.size()});
}

[[nodiscard]] inline moxcore::utility::Guid FromServiceGuid(quillocommon::Guid const& id) {
    auto const text = id.AsText();
    return moxcore::utility::Guid({text.data(), text.size()});
}

}  // namespace quillomoxui::model
