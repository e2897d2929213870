#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/session/ChildLists.h"
#include "moxcore/async/Future.h"
#include "moxcore/utility/Guid.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloUser.h"

namespace quillohost {

/// A folder of the location tree, with what lies between it and the user: as long as that is held,
/// the folder keeps its place. Without a folder: there is none.
struct Place {
    std::vector<std::shared_ptr<quillomoxui::QuilloNode>> above;
    std::shared_ptr<quillomoxui::QuilloFolder> folder;
};

/// Goes from the user down to the folder to which the IDs lead, of a project to its root folder. No
/// folder when there are no IDs, or there is no such way any more. Completes on the main thread;
/// fails with a Failure (Location) when a list cannot be had, is cancelled with the lists. Main
/// thread.
[[nodiscard]] moxcore::async::Future<Place> FindByWay(
    ChildLists& lists, std::shared_ptr<quillomoxui::QuilloUser> const& user,
    std::vector<moxcore::utility::Guid> const& way);

/// From the account down to `folder`, without the project's root folder: what leads there.
[[nodiscard]] std::vector<std::shared_ptr<quillomoxui::QuilloNode>> WayTo(
    std::shared_ptr<quillomoxui::QuilloFolder> const& folder);

/// The same by the IDs.
[[nodiscard]] std::vector<moxcore::utility::Guid> IDsOf(
    std::vector<std::shared_ptr<quillomoxui::QuilloNode>> const& way);

/// The node's name in UTF-8.
[[nodiscard]] std::string NameOf(quillomoxui::QuilloNode const& node);

}  // namespace quillohost
