#include "quillomoxui/view/FolderPickerViewImpl.h"

#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxui/drawbot/Utilities.h"
#include "moxui/ui/UI_NodeManager.h"
#include "moxui/utility/ImageProvider.h"
#include "quillomoxui/model/Backends.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"

namespace quillomoxui::view {
namespace {

using moxui::controls::UI_MultiColumnTree;

constexpr char kProjectGone[] =
    "$$$/Vistrel/quillomoxui/view/LocationPicker/ProjectGone=This project is gone";

/// Whether they are one folder, be it two nodes of it.
bool AreSame(std::shared_ptr<QuilloFolder> const& one, std::shared_ptr<QuilloFolder> const& other) {
    if (one == other || !one || !other) return one == other;
    auto const id = one->GetID();
    return !id.IsNull() && id == other->GetID();
}

bool IsPathOpen(UI_MultiColumnTree const& tree, UI_MultiColumnTree::RowPtr const& row) {
    for (auto above = row->GetParentRow(); above; above = above->GetParentRow())
        if (!tree.IsRowOpen(above)) return false;
    return true;
}

bool IsRootFolder(QuilloFolder const& folder) {
    return !NodeAs<QuilloFolder>(folder.GetParent());
}

/// A project's root folder has no name of its own that a user would know.
UTF16String NameOf(QuilloFolder const& folder) {
    return IsRootFolder(folder) ? Text("$$$/Vistrel/quillomoxui/view/LocationPicker/Assets=Assets")
                                : folder.GetName();
}

std::shared_ptr<QuilloProject> ProjectOf(std::shared_ptr<QuilloFolder> const& folder) {
    return folder ? folder->FindSelfOrAncestorOfType<QuilloProject>() : nullptr;
}

}  // namespace

boost::intrusive_ptr<FolderPickerView> FolderPickerView::CreateFolderPickerView(
    std::shared_ptr<QuilloUser> const& user,
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID) {
    return new FolderPickerViewImpl(user, currentViewID);
}

FolderPickerViewImpl::FolderPickerViewImpl(
    std::shared_ptr<QuilloUser> const& user,
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID)
    : SelectionBaseView(user),
      header(new FolderPickerHeaderView(currentViewID)),
      tree(new UI_MultiColumnTree(1)) {
    moxcore::utility::RefCountedWeakPtr<FolderPickerViewImpl> const weakSelf(this);
    rows = std::make_shared<FolderTree>(tree, [weakSelf] {
        if (auto const self = weakSelf.Lock()) self->ShowSelection();
    });
    path = std::make_shared<NodePath>(user, [weakSelf] {
        if (auto const self = weakSelf.Lock()) self->OnPathReplaced();
    });

    tree->UI_SetAccessibleName(Text("$$$/Vistrel/quillomoxui/view/LocationPicker/Folders=Folders"));
    tree->SetSingleSelection(true);
    tree->SetEmptySelectionSupported(false);
    tree->SetDrawCellFunction([weakSelf](moxui::drawbot::Drawbot* drawbot, RowPtr const& row, int,
                                         moxcore::geom::RectT<float> const& cell) {
        if (auto const self = weakSelf.Lock()) self->OnDrawCellOfRow(*drawbot, row, cell);
    });
    tree->SetRowNameFunction([weakSelf](RowPtr const& row) {
        auto const self = weakSelf.Lock();
        auto const folder = self ? self->rows->GetFolder(row) : nullptr;
        return folder ? NameOf(*folder) : UTF16String();
    });
    tree->SetRowsSelectionChangedFunction([weakSelf](std::vector<RowPtr> const& selected) {
        if (auto const self = weakSelf.Lock()) self->SelectionChangedCallback(selected);
    });
    tree->SetRowDisclosureChangedFunction([weakSelf](RowPtr const& row, bool open) {
        if (auto const self = weakSelf.Lock()) self->RowDisclosureChangedCallback(row, open);
    });

    AddShown(*this, header);
    AddShown(*this, tree);
    path->Follow(GetSelection());
    PopulateFolderTree();
    RetainBinding(static_cast<ProposedSelectionNotifyingPropertyHost&>(*user).BindValueChanged(
        utility::WeakBindMemberFunction(this, &FolderPickerViewImpl::OnProposedSelectionChanged)));
}

FolderPickerViewImpl::~FolderPickerViewImpl() = default;

void FolderPickerViewImpl::SetFolderActivatedFunction(std::function<void()> function) {
    tree->SetRowActivatedFunction([function = std::move(function)](RowPtr const&) { function(); });
}

void FolderPickerViewImpl::TakeFocus() {
    tree->UI_SetFocus();
}

void FolderPickerViewImpl::UI_Show(bool show) {
    if (show) {
        FollowSelection();
        SetHeaderNames(path->GetProject());
        rows->FetchAhead();
        FetchFirst(GetSelection());
    } else {
        rows->StopFetching();
    }
    SelectionBaseView::UI_Show(show);
}

void FolderPickerViewImpl::UI_SizeChanged(moxcore::geom::RectT<float> const& rect) {
    SelectionBaseView::UI_SizeChanged(rect);
    constexpr float kHeaderHeight = 50;
    bool const hadPlace = !tree->UI_GetLocalRectF(false).IsEmpty();
    header->UI_SetLocalRectF({rect.x, rect.y, rect.width, kHeaderHeight});
    tree->UI_SetLocalRectF(
        {rect.x, rect.y + kHeaderHeight, rect.width, rect.height - kHeaderHeight + 2});
    tree->SetColumnWidth(0, 4 * rect.width);
    // Nothing could be scrolled to before there was a place to see it in.
    if (!hadPlace) SetTreeSelection(GetSelection(), true);
}

FolderPickerViewImpl::FolderPtr FolderPickerViewImpl::GetSelection() const {
    auto const proposed = User().GetProposedSelection();
    return proposed ? proposed : User().GetSelection();
}

void FolderPickerViewImpl::PopulateFolderTree() {
    auto const project = ProjectOf(GetSelection());
    rows->SetRoot(project ? project->GetRootFolder() : nullptr);
}

void FolderPickerViewImpl::MakeRowVisible(FolderPtr const& folder, bool keepRowClosed) {
    auto row = rows->GetRowForFolder(folder);
    if (row && keepRowClosed) row = row->GetParentRow();
    for (; row; row = row->GetParentRow())
        tree->OpenRow(row);
}

void FolderPickerViewImpl::SetTreeSelection(FolderPtr const& folder, bool scroll) {
    auto const row = rows->GetRowForFolder(folder);
    if (!row) return;
    tree->SelectRow(row, true, true, true);
    if (scroll) tree->ScrollRowIntoView(row, false, 0, true);
}

void FolderPickerViewImpl::ShowSelection() {
    auto const selection = GetSelection();
    auto const row = rows->GetRowForFolder(selection);
    if (!row) return;
    if (std::exchange(opensPath, false)) MakeRowVisible(selection, selection != rows->GetRoot());
    if (tree->IsRowSelected(row)) return;
    SetTreeSelection(selection, !rows->IsRestoring() && IsPathOpen(*tree, row));
}

void FolderPickerViewImpl::FollowSelection() {
    auto const selection = GetSelection();
    if (!AreSame(selection, path->GetFollowed())) opensPath = true;
    path->Follow(selection);
    auto const project = ProjectOf(selection);
    auto const root = project ? project->GetRootFolder() : nullptr;
    // A folder without a row is of another project, or has not arrived yet.
    if (rows->GetRowForFolder(selection) || rows->IsRoot(root))
        ShowSelection();
    else
        PopulateFolderTree();
}

void FolderPickerViewImpl::OnProposedSelectionChanged(FolderPtr const& proposed) {
    // Where nothing is proposed any more, the view stays where it is.
    if (proposed) FollowSelection();
}

void FolderPickerViewImpl::OnPathReplaced() {
    auto const project = path->GetProject();
    if (project) {
        SetHeaderNames(project);
        if (auto const root = project->GetRootFolder()) rows->ReplaceRoot(root);
    }
    if (path->GetState() == NodePath::State::Pending) return;

    // The user's own proposal, made meanwhile, stays.
    bool const isProposed = User().GetProposedSelection() == path->GetFollowed();
    auto const folder = path->GetFolder();
    if (!folder) {
        header->SetHeaderName(header->GetProjectName(), Text(kProjectGone));
        rows->SetRoot(nullptr);
    }
    if (!isProposed) return;
    path->Follow(folder);
    opensPath = false;
    User().SetProposedSelection(folder);
    ShowSelection();
}

void FolderPickerViewImpl::SetHeaderNames(std::shared_ptr<QuilloProject> const& project) {
    auto const workspace = project ? project->GetParent() : nullptr;
    header->SetHeaderName(project ? project->GetName() : UTF16String(),
                          workspace ? workspace->GetName() : UTF16String());
}

void FolderPickerViewImpl::SelectionChangedCallback(std::vector<RowPtr> const& selected) {
    if (selected.size() != 1) return;
    auto const folder = rows->GetFolder(selected.front());
    if (!folder) return;
    path->Follow(folder);
    opensPath = false;
    User().SetProposedSelection(folder);
    FetchFirst(folder);
}

void FolderPickerViewImpl::RowDisclosureChangedCallback(RowPtr const& row, bool open) {
    if (!open || row->GetChildCount() == 0) return;
    FetchFirst(rows->GetFolder(row));
    tree->ScrollRowIntoView(row->GetChildRow(row->GetChildCount() - 1), false, 0, false);
    tree->ScrollRowIntoView(row, false, 0, true);
}

void FolderPickerViewImpl::FetchFirst(FolderPtr const& folder) {
    // Many rows may be opened at once: what matters is the last.
    if (!folder || std::exchange(lookedAt, folder)) return;
    moxcore::utility::RefCountedWeakPtr<FolderPickerViewImpl> const weakSelf(this);
    moxcore::threads::AsyncCallFromMainThread(
        [weakSelf] {
            auto const self = weakSelf.Lock();
            if (!self) return;
            NodeVector<QuilloNode> nodes{std::exchange(self->lookedAt, nullptr)};
            auto const children = nodes.front()->GetChildNodes();
            nodes.insert(nodes.end(), children.begin(), children.end());
            model::ChosenBackend().FetchFirst(nodes);
        },
        0);
}

void FolderPickerViewImpl::OnDrawCellOfRow(moxui::drawbot::Drawbot& drawbot, RowPtr const& row,
                                           moxcore::geom::RectT<float> const& cell) {
    auto const folder = rows->GetFolder(row);
    if (!folder) return;
    auto& surface = *drawbot.GetSurface();
    surface.PushClip(cell);
    moxcore::geom::PointT<float> origin{cell.x + 6, cell.y + cell.height - 6.5F};
    if (folder != rows->GetRoot()) {
        if (!folderImage)
            folderImage = moxui::ui::UI_NodeManager::Get(false)->GetImageProvider()->GetThemeImage(
                "QuilloFolder_Sm", nullptr, 0);
        if (folderImage) {
            surface.DrawImage(*folderImage, {cell.x, cell.y}, 1);
            origin.x += static_cast<float>(folderImage->GetSize().x) + 4;
        }
    }
    bool const isSelected = tree->IsRowSelected(row);
    auto const font =
        drawbot.GetSupplier()->NewFont(GetFontName(0), GetFontSize(0), isSelected ? "Bold" : "");
    surface.DrawString(GetColor(moxui::skins::ThemeColor::kText), *font,
                       TruncateString(*font, NameOf(*folder), cell.width - (origin.x - cell.x),
                                      moxui::drawbot::TruncationMode::End),
                       origin);
    surface.PopClip();
}

}  // namespace quillomoxui::view
