#pragma once

#include <string>

#include "quillocommon/Failures.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// One line for the user: what failed, and what to do when the service cannot be reached.
[[nodiscard]] QUILLOHOSTKIT_API std::string ExplainFailure(quillocommon::Failure const& failure);

}  // namespace quillohostkit
