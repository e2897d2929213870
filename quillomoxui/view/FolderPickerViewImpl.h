#pragma once

#include <vector>

#include "moxui/drawbot/Drawbot.h"
#include "quillomoxui/model/NodePath.h"
#include "quillomoxui/view/FolderPickerHeaderView.h"
#include "quillomoxui/view/FolderPickerView.h"
#include "quillomoxui/view/FolderTree.h"
#include "quillomoxui/view/SelectionBaseView.h"

namespace quillomoxui::view {

/// Main thread.
class FolderPickerViewImpl : public SelectionBaseView, public FolderPickerView {
public:
    FolderPickerViewImpl(std::shared_ptr<QuilloUser> const& user,
                         std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID);
    ~FolderPickerViewImpl() override;

    [[nodiscard]] moxui::ui::UI_SubView& GetView() override { return *this; }
    void SetFolderActivatedFunction(std::function<void()> function) override;
    void TakeFocus() override;

    /// Shown, it names the selection's project and has its folders fetched.
    void UI_Show(bool show) override;
    void UI_SizeChanged(moxcore::geom::RectT<float> const& rect) override;

private:
    using FolderPtr = std::shared_ptr<QuilloFolder>;
    using RowPtr = moxui::controls::UI_MultiColumnTree::RowPtr;

    /// The proposed folder, or else the selected one; may be null.
    [[nodiscard]] FolderPtr GetSelection() const;
    void PopulateFolderTree();
    void MakeRowVisible(FolderPtr const& folder, bool keepRowClosed);
    void SetTreeSelection(FolderPtr const& folder, bool scroll);
    /// Selects the selection's row, if it has one and that is not selected yet.
    void ShowSelection();
    void FollowSelection();
    void OnProposedSelectionChanged(FolderPtr const& proposed);
    void OnPathReplaced();
    /// The user looks at `folder`: its list and those of its folders go before others that wait.
    void FetchFirst(FolderPtr const& folder);
    void SetHeaderNames(std::shared_ptr<QuilloProject> const& project);

    void SelectionChangedCallback(std::vector<RowPtr> const& selected);
    void RowDisclosureChangedCallback(RowPtr const& row, bool open);
    void OnDrawCellOfRow(moxui::drawbot::Drawbot& drawbot, RowPtr const& row,
                         moxcore::geom::RectT<float> const& cell);

    boost::intrusive_ptr<FolderPickerHeaderView> header;
    boost::intrusive_ptr<moxui::controls::UI_MultiColumnTree> tree;
    std::shared_ptr<FolderTree> rows;
    std::shared_ptr<NodePath> path;  // to the selection
    /// Whether the path to the selection's row is to be opened when it is there: once for each that
    /// the user or the host has chosen. A row that the user closes afterwards stays closed.
    bool opensPath = true;
    FolderPtr lookedAt;  // until its list is asked for first
    boost::intrusive_ptr<moxui::drawbot::ImageInterface> folderImage;  // from the first drawing on
};

// Both bases have these.
inline void intrusive_ptr_add_ref(FolderPickerViewImpl const* view) {
    view->AddReference();
}
inline void intrusive_ptr_release(FolderPickerViewImpl const* view) {
    view->ReleaseReference();
}

}  // namespace quillomoxui::view
