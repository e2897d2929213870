#pragma once

#include <memory>

#include "moxui/controls/UI_Button.h"
#include "moxui/ui/UI_Dialog.h"
#include "quillomoxui/sharedui/PopupMainView.h"
#include "quillomoxui/sharedui/PopupManager.h"

namespace quillomoxui::view {

/// Shows the sections in a modal dialog over the window that the host names for dialogs. Main
/// thread.
class DialogManager : public PopupManager {
public:
    DialogManager();
    ~DialogManager() override;

    void SetPopupGlobalLoc(moxcore::geom::PointT<float> const& location) override;
    boost::intrusive_ptr<PopupSectionView> InsertPopupSection(
        unsigned long index, boost::intrusive_ptr<moxui::ui::UI_SubView> const& content) override;
    void MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& section) override;
    /// Returns when the dialog has been closed; at once when the host names no window for it.
    void ShowWindow() override;
    void AddNotifyOnCommit(std::function<void()> const& function) override;
    void HideWindow() override;
    void DestructWindow() override;
    void SetButtons(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view,
                    std::string const& cancelID, std::string const& commitID) override;
    void SetParent(boost::intrusive_ptr<moxui::ui::UI_Node> const& parent) override;

private:
    bool CreateDialogWindow();
    void ArrangeChildren();

    boost::intrusive_ptr<PopupMainView> mainView;
    boost::intrusive_ptr<moxui::ui::UI_Dialog> dialog;
    boost::intrusive_ptr<moxui::controls::UI_Button> cancelButton;
    boost::intrusive_ptr<moxui::controls::UI_Button> commitButton;
};

[[nodiscard]] std::shared_ptr<PopupManager> CreateDialogManager();

}  // namespace quillomoxui::view
