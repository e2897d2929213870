#pragma once

#include "moxcore/utility/Guid.h"
#include "quillocommon/Guid.h"

namespace quillomoxui::model {

// The two identifier types meet in their string form only.

[[nodiscard]] inline quillocommon::Guid ToServiceGuid(moxcore::utility::Guid const& id) {
    return quillocommon::Guid(id.AsStdString());
}

[[nodiscard]] inline moxcore::utility::Guid FromServiceGuid(quillocommon::Guid const& id) {
    return moxcore::utility::Guid(id.AsString());
}

}  // namespace quillomoxui::model
