#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/session/Session.h"
#include "moxcore/utility/Guid.h"
#include "quillohostkit/session/FolderPath.h"

namespace quillohost {

/// Finds the folder to share to in the user's tree. Of the lists of folders, only those on the path
/// are fetched. Keeps what it has come by, so that what it found keeps its place below the user as
/// long as the finder is there. Main thread; runs its loop while it waits.
class DestinationFinder {
public:
    using Folder = std::shared_ptr<quillomoxui::QuilloFolder>;
    using Guid = moxcore::utility::Guid;

    DestinationFinder(Session& session, std::shared_ptr<quillomoxui::QuilloUser> user);

    /// The folder at `path`; at the path of a project, its root folder. A name is looked for as it
    /// is first, then without regard to case. A Failure (Location) that says what there is instead
    /// when one is not found, or leads to two places.
    [[nodiscard]] Folder FindByNamePath(quillohostkit::NamePath const& path);

    /// The folder at `path`; null when the path is empty or no longer exists.
    [[nodiscard]] Folder FindByIDPath(quillohostkit::IDPath const& path);

    /// The root folder of the first project. A Failure (Location) when there is none.
    [[nodiscard]] Folder FindFirstProject();

    /// Whether the folder holds something with this ID.
    [[nodiscard]] bool Holds(Folder const& folder, Guid const& id);

private:
    using Node = std::shared_ptr<quillomoxui::QuilloNode>;

    [[nodiscard]] quillomoxui::NodeVector<quillomoxui::QuilloNode> ChildrenOf(Node const& parent);
    [[nodiscard]] Node FindChild(Node const& parent, std::string const& name);

    Session& session;
    std::shared_ptr<quillomoxui::QuilloUser> const user;
    std::vector<Node> seen;
};

}  // namespace quillohost
