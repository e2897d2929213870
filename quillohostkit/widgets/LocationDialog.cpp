#include "quillohostkit/widgets/LocationDialog.h"

#include "moxui/backend/HostWidget.h"
#include "moxworkspace/workspace/WorkspaceUtils.h"
#include "quillohostkit/session/FolderPath.h"
#include "quillomoxui/sharedui/SelectLocationDialog.h"

namespace quillohostkit {

using moxworkspace::workspace::WorkspaceUtils;

std::optional<ChosenLocation> AskForLocation(std::shared_ptr<quillomoxui::QuilloUser> const& user,
                                             QWidget& parent) {
    std::optional<ChosenLocation> chosen;
    // Nobody else keeps it: however this ends, no parent for dialogs is left behind.
    auto const over = moxui::backend::WrapWidget(&parent);
    WorkspaceUtils::SetModalDialogParentNode(over);
    quillomoxui::sharedui::ShowSelectLocationDialogCentered(
        user, [&](moxcore::utility::Guid const& folderID, auto const&) {
            if (folderID.IsNull()) return;
            auto const folder = user->GetSelection();
            chosen = ChosenLocation{IDPathOf(folder), JoinNamePath(NamePathOf(folder))};
        });
    return chosen;
}

}  // namespace quillohostkit
