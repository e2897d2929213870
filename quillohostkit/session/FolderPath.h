#pragma once

#include <memory>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/session/ChildLists.h"
#include "quillohostkit/session/NamePath.h"
#include "quillohostkit/state/IDPath.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloUser.h"

namespace quillohostkit {

/// A folder of the location tree with the nodes above it, from the user down: while they are held,
/// the folder keeps its parents. Without a folder: none.
struct FolderPath {
    std::vector<std::shared_ptr<quillomoxui::QuilloNode>> above;
    std::shared_ptr<quillomoxui::QuilloFolder> folder;
};

/// Finds the folder at `path` in the tree of `user`; at the path of a project, its root folder. No
/// folder when the path is empty or no longer exists. Completes on the main thread; fails with a
/// Failure (Location) when a list cannot be had, is cancelled with the lists. Main thread.
[[nodiscard]] QUILLOHOSTKIT_API moxcore::async::Future<FolderPath> FindByIDPath(
    ChildLists& lists, std::shared_ptr<quillomoxui::QuilloUser> const& user, IDPath const& path);

/// The path of `folder` by IDs, and by names.
[[nodiscard]] QUILLOHOSTKIT_API IDPath
IDPathOf(std::shared_ptr<quillomoxui::QuilloFolder> const& folder);
[[nodiscard]] QUILLOHOSTKIT_API NamePath
NamePathOf(std::shared_ptr<quillomoxui::QuilloFolder> const& folder);

/// The node's name in UTF-8.
[[nodiscard]] QUILLOHOSTKIT_API std::string NameOf(quillomoxui::QuilloNode const& node);

}  // namespace quillohostkit
