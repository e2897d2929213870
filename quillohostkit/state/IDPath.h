#pragma once

#include <string>
#include <vector>

#include "moxcore/utility/Guid.h"

namespace quillohostkit {

/// A path in the location tree by IDs, from the account down to a folder, without the project's
/// root folder. Empty: none.
using IDPath = std::vector<moxcore::utility::Guid>;

/// The path as one line of text.
[[nodiscard]] std::string TextOf(IDPath const& path);

/// The path that TextOf has written.
[[nodiscard]] IDPath IDPathFromText(std::string const& text);

}  // namespace quillohostkit
