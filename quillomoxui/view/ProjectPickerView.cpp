#include "quillomoxui/view/ProjectPickerView.h"

#include <algorithm>
#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"

namespace quillomoxui::view {

using utility::WeakBindMemberFunction;

ProjectPickerView::ProjectPickerView(
    std::shared_ptr<QuilloUser> const& user,
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID,
    MenuFunction const& preShow, MenuFunction const& postShow)
    : SelectionBaseView(user),
      accountSelector(new AccountSelectorView(user)),
      scrollView(new moxui::controls::UI_ScrollView(moxui::controls::UI_ScrollView::kVerticalOnly)),
      currentViewID(currentViewID) {
    accountSelector->SetPreShowPopupMenuFunction(preShow);
    accountSelector->SetPostShowPopupMenuFunction(postShow);
    AddShown(*this, accountSelector);
    RetainBinding(static_cast<AccountsNotifyingPropertyHost&>(*user).BindValueChanged(
        WeakBindMemberFunction(accountSelector.get(), &AccountSelectorView::SetAccountVector)));
    RetainBinding(static_cast<ProposedAccountNotifyingPropertyHost&>(*user).BindValueChanged(
        WeakBindMemberFunction(this, &ProjectPickerView::OnProposedAccountChanged)));

    scrollView->UI_SetAccessibleName(
        Text("$$$/Vistrel/quillomoxui/view/LocationPicker/Projects=Projects"));
    moxcore::utility::RefCountedWeakPtr<ProjectPickerView> const weakSelf(this);
    scrollView->SetScrolledFunction([weakSelf] {
        if (auto const self = weakSelf.Lock()) self->OnScrolled();
    });
    AddShown(*this, scrollView);
    scrollView->UI_SetLocalRectF({0, 50, 340, 264});
}

ProjectPickerView::~ProjectPickerView() = default;

void ProjectPickerView::TakeFocus() {
    ProjectListItem* target = nullptr;
    for (auto const& section : sections)
        for (auto const& item : section->GetItems())
            if (!target || item->IsSelected()) target = item.get();
    if (target)
        target->UI_SetFocus();
    else
        accountSelector->UI_SetFocus();
}

void ProjectPickerView::OnProposedAccountChanged(std::shared_ptr<QuilloAccount> const& proposed) {
    UI_Invalidate();
    if (!proposed || proposed == account) return;
    // The same account in a list that was fetched again is shown where it was.
    if (!account || account->GetID() != proposed->GetID()) {
        scrollView->SetScrollPosition({0, 0});
        scrollWanted = 0;
    }
    account = proposed;
    moxcore::utility::RefCountedWeakPtr<ProjectPickerView> const weakSelf(this);
    workspacesBinding = static_cast<WorkspacesNotifyingPropertyHost&>(*proposed).BindValueChanged(
        [weakSelf, owner = proposed.get()](NodeVector<QuilloWorkspace> const& workspaces) {
            // A delivery that was queued before the binding ended still comes.
            auto const self = weakSelf.Lock();
            if (self && self->account.get() == owner) self->PopulateWorkspaceSections(workspaces);
        });
}

void ProjectPickerView::PopulateWorkspaceSections(NodeVector<QuilloWorkspace> const& workspaces) {
    KeepScrollPosition();
    moxcore::utility::Guid focused;
    for (auto const& section : sections)
        if (auto const project = section->GetFocusedProject(); !project.IsNull()) focused = project;

    auto const content = scrollView->GetContentView();
    isPlacing = true;
    content->ChildRemoveAll();
    isPlacing = false;
    sections.clear();
    projectsBindings.clear();
    moxcore::utility::RefCountedWeakPtr<ProjectPickerView> const weakSelf(this);
    for (auto const& workspace : workspaces) {
        boost::intrusive_ptr<WorkspaceSectionView> const section(
            new WorkspaceSectionView(workspace, SharedUser(), currentViewID));
        section->SetSizeChangedFunction([weakSelf] {
            if (auto const self = weakSelf.Lock()) self->OnChildSizeChanged();
        });
        section->FocusWhenThere(focused);
        sections.push_back(section);
        AddShown(*content, section);
        moxcore::utility::RefCountedWeakPtr<WorkspaceSectionView> const weakSection(section.get());
        projectsBindings.push_back(
            static_cast<ProjectsNotifyingPropertyHost&>(*workspace)
                .BindValueChanged([weakSelf, weakSection](NodeVector<QuilloProject> const& list) {
                    auto const self = weakSelf.Lock();
                    auto const alive = weakSection.Lock();
                    if (self && alive) self->OnProjectsChanged(*alive, list);
                }));
    }
    OnChildSizeChanged();
}

void ProjectPickerView::OnProjectsChanged(WorkspaceSectionView& section,
                                          NodeVector<QuilloProject> const& projects) {
    KeepScrollPosition();
    // A row that had the keyboard's focus passes it on, and whatever gets it is scrolled to.
    isPlacing = true;
    section.OnProjectsChanged(projects);
    isPlacing = false;
}

void ProjectPickerView::KeepScrollPosition() {
    scrollWanted = std::max(scrollWanted, scrollView->GetScrollPosition().y);
}

void ProjectPickerView::OnChildSizeChanged() {
    // Sections tell of their projects one after another, and are then placed together.
    if (std::exchange(layoutIsDue, true)) return;
    moxcore::utility::RefCountedWeakPtr<ProjectPickerView> const weakSelf(this);
    moxcore::threads::AsyncCallFromMainThread(
        [weakSelf] {
            auto const self = weakSelf.Lock();
            if (!self) return;
            self->layoutIsDue = false;
            self->UI_SizeChanged(self->UI_GetLocalRectF(false));
        },
        0);
}

void ProjectPickerView::UI_SizeChanged(moxcore::geom::RectT<float> const& rect) {
    SelectionBaseView::UI_SizeChanged(rect);
    Layout const layout(*this);
    if (!layout) return;
    constexpr float kMargin = 15;
    accountSelector->UI_SetLocalRectF(
        {kMargin, kMargin, rect.width - 2 * kMargin, layout.SizeOf(*accountSelector).y});
    constexpr float kGap = 3;
    float y = kGap;
    isPlacing = true;
    for (auto const& section : sections)
        y += layout.PlaceAt(*section, 0, y).y + kGap;
    scrollView->SetContentRect({0, 0, 340, y});
    if (scrollWanted > 0) {
        scrollView->SetScrollPosition({0, scrollWanted});
        if (scrollView->GetScrollPosition().y >= scrollWanted) scrollWanted = 0;
    }
    isPlacing = false;
    ShowRowsInView();
}

void ProjectPickerView::OnScrolled() {
    if (isPlacing) return;
    scrollWanted = 0;
    ShowRowsInView();
}

void ProjectPickerView::ShowRowsInView() {
    float const top = scrollView->GetScrollPosition().y;
    float const bottom = top + scrollView->UI_GetLocalRectF(false).height;
    for (auto const& section : sections) {
        auto const place = section->UI_GetLocalRectF(true);
        if (place.y < bottom && place.y + place.height > top)
            section->ShowRows(top - place.y, bottom - place.y);
    }
}

}  // namespace quillomoxui::view
