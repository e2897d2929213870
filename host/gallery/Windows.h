#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "moxui/controls/UI_TouchPopupContainer.h"
#include "moxui/ui/UI_Dialog.h"

namespace quillogallery {

/// A popup that hangs from `anchor`, with a few controls, a menu among them; not shown yet.
[[nodiscard]] boost::intrusive_ptr<moxui::controls::UI_TouchPopupContainer> MakePopup(
    boost::intrusive_ptr<moxui::ui::UI_Node> const& anchor);

/// Shows the popup below the right edge of what it hangs from.
void Show(moxui::controls::UI_TouchPopupContainer& popup, moxui::ui::UI_Node const& anchor);

/// A dialog over the window that `node` is in, with a cancel and a commit button; not shown yet.
[[nodiscard]] boost::intrusive_ptr<moxui::ui::UI_Dialog> MakeDialog(moxui::ui::UI_Node& node);

}  // namespace quillogallery
