#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "moxcore/geom/Point.h"
#include "moxui/ui/UI_SubView.h"
#include "quillomoxui/Export.h"

namespace quillomoxui {

class PopupSectionView;

/// A window that shows a column of sections. Main thread.
class QUILLO_API PopupManager {
public:
    /// Kept, and read by no manager there is: a popup hangs from its parent, a dialog stands where
    /// the toolkit puts it.
    virtual void SetPopupGlobalLoc(moxcore::geom::PointT<float> const& location) = 0;

    /// Puts a new section around `content` before the section at `index`, at the end when there is
    /// none. Null once the window was destructed.
    virtual boost::intrusive_ptr<PopupSectionView> InsertPopupSection(
        unsigned long index, boost::intrusive_ptr<moxui::ui::UI_SubView> const& content) = 0;

    /// Shows `section` alone, or, with null, every section.
    virtual void MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& section) = 0;

    /// Shows the window; a modal one has been closed again when the call returns. Nothing happens
    /// without a place to show it in.
    virtual void ShowWindow() = 0;

    /// `function` is called whenever the user closes the popup, after those that were added before
    /// it. What one throws is reported (moxcore/threads/MainThread.h), and the rest still run; it
    /// must not be empty, or nothing runs after it.
    virtual void AddNotifyOnCommit(std::function<void()> const& function) = 0;

    /// Hides the window; ShowWindow shows it again.
    virtual void HideWindow() = 0;

    /// Lets go of the window, for good where the window is a popup.
    virtual void DestructWindow() = 0;

    /// The nodes below `view` that serve a dialog as its Cancel and commit buttons, by their IDs. A
    /// popup has none.
    virtual void SetButtons(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view,
                            std::string const& cancelID, std::string const& commitID) = 0;

    /// The host's node that a popup hangs from; held weakly. A popup that hung from another, shown
    /// or hidden, belongs to this one from then on (moxui/controls/UI_TouchPopupContainer.h).
    virtual void SetParent(boost::intrusive_ptr<moxui::ui::UI_Node> const& parent) = 0;

    virtual ~PopupManager();
};

/// A popup that hangs from a node of the host's. Main thread.
[[nodiscard]] QUILLO_API std::shared_ptr<PopupManager> CreatePopupManager();

}  // namespace quillomoxui
