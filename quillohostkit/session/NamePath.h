#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// A path in the location tree by names, from the account down to a folder, without the project's
/// root folder. As text, the names are joined by "/"; a "/" or "\" that belongs to a name has a "\"
/// before it.
using NamePath = std::vector<std::string>;

/// A Failure (Usage) when a name is empty or a "\" stands before anything else.
[[nodiscard]] QUILLOHOSTKIT_API NamePath SplitNamePath(std::string_view text);

[[nodiscard]] QUILLOHOSTKIT_API std::string JoinNamePath(NamePath const& path);

}  // namespace quillohostkit
