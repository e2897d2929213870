#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "moxui/Export.h"
#include "moxui/ui/UI_Node.h"

namespace moxworkspace::workspace {

/// Services of the host's workspace for windows above it. Main thread.
class MOXUI_API WorkspaceUtils {
public:
    /// The node over whose window modal dialogs are shown; null when the host has supplied none, or
    /// let go of it.
    [[nodiscard]] static boost::intrusive_ptr<moxui::ui::UI_Node> GetModalDialogParentNode();

    /// Supplies the above; the host keeps the node for as long as it is to be used. Null for none.
    static void SetModalDialogParentNode(boost::intrusive_ptr<moxui::ui::UI_Node> const& node);

    WorkspaceUtils() = delete;
};

}  // namespace moxworkspace::workspace
