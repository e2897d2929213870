#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"
#include "moxui/Export.h"

namespace moxui::ui {

class UI_Node;

/// A window of the platform's, as one hands it on: to be the parent of a dialog, or to show a toast
/// over. Keeps nothing alive; none when it was made without a node, or once that is gone. Main
/// thread.
class MOXUI_API OS_Window {
public:
    OS_Window() = default;
    /// The window that `node` is in.
    explicit OS_Window(UI_Node* node);

    /// A node in the window; null when there is no window.
    [[nodiscard]] boost::intrusive_ptr<UI_Node> GetNode() const;

private:
    moxcore::utility::RefCountedWeakPtr<UI_Node> node;
};

/// The host's main window, as the host has registered it (backend::SetMainTopLevelWindow); none
/// before, and once it is destroyed.
[[nodiscard]] MOXUI_API OS_Window GetMainTopLevelWindow();

}  // namespace moxui::ui
