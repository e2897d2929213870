#pragma once

#include <vector>

#include "moxcore/utility/Guid.h"

namespace quillohostkit {

/// A path in the location tree by IDs, from the account down to a folder, without the project's
/// root folder. Empty: none.
using IDPath = std::vector<moxcore::utility::Guid>;

}  // namespace quillohostkit
