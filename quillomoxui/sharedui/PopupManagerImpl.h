#pragma once

#include <vector>

#include "moxcore/utility/LifetimeToken.h"
#include "moxui/controls/UI_TouchPopupContainer.h"
#include "quillomoxui/sharedui/PopupMainView.h"
#include "quillomoxui/sharedui/PopupManager.h"

namespace quillomoxui {

/// Shows the sections in a popup under its parent. Main thread.
class PopupManagerImpl : public PopupManager {
public:
    PopupManagerImpl();
    ~PopupManagerImpl() override;

    void SetPopupGlobalLoc(moxcore::geom::PointT<float> const& location) override;
    boost::intrusive_ptr<PopupSectionView> InsertPopupSection(
        unsigned long index, boost::intrusive_ptr<moxui::ui::UI_SubView> const& content) override;
    void MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& section) override;
    void ShowWindow() override;
    void AddNotifyOnCommit(std::function<void()> const& function) override;
    void HideWindow() override;
    void DestructWindow() override;
    void SetButtons(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view,
                    std::string const& cancelID, std::string const& commitID) override;
    void SetParent(boost::intrusive_ptr<moxui::ui::UI_Node> const& parent) override;

private:
    using CommitFunctions = std::vector<std::shared_ptr<std::function<void()>>>;

    void ArrangeChildren();
    void OnPopupClosed();

    // Released from the last to the first.
    boost::intrusive_ptr<PopupMainView> mainView;
    boost::intrusive_ptr<moxui::controls::UI_TouchPopupContainer> popupWindow;
    moxcore::utility::RefCountedWeakPtr<moxui::ui::UI_Node> parent;
    CommitFunctions notifyOnCommit;
    moxcore::geom::PointT<float> popupGlobalLoc;

    /// Held weakly by the window's hook: a window that closes late finds the manager gone.
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillomoxui
