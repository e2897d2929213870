#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillohost {

// A place in the tree as text: the names on the way to it from the account down, joined by "/". A
// "/" or "\" that belongs to a name has a "\" before it.

/// The names of `path`. A Failure (Usage) when a name is empty or a "\" stands before anything
/// else.
[[nodiscard]] std::vector<std::string> SplitLocationPath(std::string_view path);

[[nodiscard]] std::string JoinLocationPath(std::vector<std::string> const& names);

}  // namespace quillohost
