#pragma once

#include <functional>
#include <vector>

#include "moxui/controls/UI_ScrollView.h"
#include "quillomoxui/view/AccountSelectorView.h"
#include "quillomoxui/view/SelectionBaseView.h"
#include "quillomoxui/view/WorkspaceSectionView.h"

namespace quillomoxui::view {

/// The first step of picking a location: the menu of accounts, and the workspaces of the chosen one
/// with their projects. Main thread.
class ProjectPickerView : public SelectionBaseView {
public:
    using MenuFunction = std::function<void(moxui::controls::UI_Popup&)>;

    /// `preShow` and `postShow` run before and after the menu of accounts is open.
    ProjectPickerView(std::shared_ptr<QuilloUser> const& user,
                      std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID,
                      MenuFunction const& preShow, MenuFunction const& postShow);
    ~ProjectPickerView() override;

    /// Gives the keyboard's focus to the row of the proposal, or else to the first row, or to the
    /// menu where there are no rows.
    void TakeFocus();

    void UI_SizeChanged(moxcore::geom::RectT<float> const& rect) override;

private:
    void OnProposedAccountChanged(std::shared_ptr<QuilloAccount> const& account);
    void PopulateWorkspaceSections(NodeVector<QuilloWorkspace> const& workspaces);
    void OnProjectsChanged(WorkspaceSectionView& section,
                           NodeVector<QuilloProject> const& projects);
    void OnChildSizeChanged();
    void KeepScrollPosition();
    void OnScrolled();
    void ShowRowsInView();

    boost::intrusive_ptr<AccountSelectorView> accountSelector;
    std::vector<boost::intrusive_ptr<WorkspaceSectionView>> sections;
    boost::intrusive_ptr<moxui::controls::UI_ScrollView> scrollView;
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const currentViewID;

    std::shared_ptr<QuilloAccount> account;  // whose workspaces are shown
    std::shared_ptr<BindingHandle> workspacesBinding;
    std::vector<std::shared_ptr<BindingHandle>> projectsBindings;  // of the sections
    bool layoutIsDue = false;
    bool isPlacing = false;  // what scrolls meanwhile is not the user
    /// Where the list was scrolled to before rows were made anew, which are placed later.
    float scrollWanted = 0;
};

}  // namespace quillomoxui::view
