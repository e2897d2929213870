#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "moxui/controls/UI_MultiColumnTree.h"
#include "quillomoxui/model/QuilloFolder.h"

namespace quillomoxui::view {

/// Shows the folders below one root as the rows of a tree, as far as they have been fetched, and
/// follows their lists. Made with std::make_shared. Main thread.
///
/// Folders come by the ten thousands, and their lists by the thousand: rows are made in slices
/// between which the event loop runs. A folder's first list is appended to its row; another one
/// that names the same folders changes no row. A new folder in the place of one of the same ID
/// takes over its row, with what is below it until the list of the new one has come, so that a list
/// that is fetched again does not close what is open.
class FolderTree : public virtual moxcore::utility::EnableSharedAs {
public:
    using RowPtr = moxui::controls::UI_MultiColumnTree::RowPtr;
    using FolderPtr = std::shared_ptr<QuilloFolder>;

    /// `onRowsChanged` runs after each slice that has changed rows.
    FolderTree(boost::intrusive_ptr<moxui::controls::UI_MultiColumnTree> tree,
               std::function<void()> onRowsChanged);
    ~FolderTree() override;

    /// Makes all rows anew, for `root` and what is below it; none for null. The first slice is done
    /// when the call returns.
    void SetRoot(FolderPtr const& root);
    /// Goes on with `root` (not null) in the place of the present one, if there is one.
    void ReplaceRoot(FolderPtr const& root);

    /// From now on every folder in the tree is asked for its children, once.
    void FetchAhead();
    /// Until the next FetchAhead no folder is.
    void StopFetching() { fetchesAhead = false; }

    [[nodiscard]] FolderPtr GetRoot() const;
    /// Whether `folder` is the root, or the one whose place that has taken, or both are null.
    [[nodiscard]] bool IsRoot(FolderPtr const& folder) const;
    [[nodiscard]] RowPtr GetRootRow() const;
    /// Null for a folder that has no row, or not yet.
    [[nodiscard]] RowPtr GetRowForFolder(FolderPtr const& folder) const;
    [[nodiscard]] FolderPtr GetFolder(RowPtr const& row) const;
    /// Whether rows that are known are being made again, after which the tree is scrolled to where
    /// it was.
    [[nodiscard]] bool IsRestoring() const { return scrollWanted.has_value(); }

private:
    struct Entry;
    using TimePoint = std::chrono::steady_clock::time_point;

    Entry& NewEntry(FolderPtr const& folder);
    void PutFolder(Entry& entry, FolderPtr const& folder);
    [[nodiscard]] auto OnChangeOf(Entry const& entry);
    void Attend(Entry& entry);
    void OnListChanged(QuilloFolder const* folder);
    void Schedule();
    void Work();
    bool TakeIn(Entry& entry, TimePoint end);
    void Merge(Entry& entry, NodeVector<QuilloFolder> const& list);
    void DropUnreachable();
    void MakeAllRowsAnew();
    void MakeRow(Entry& entry, RowPtr const& parent);
    bool MakeRows(Entry& entry, TimePoint end);

    boost::intrusive_ptr<moxui::controls::UI_MultiColumnTree> const tree;
    std::function<void()> const onRowsChanged;

    std::vector<std::unique_ptr<Entry>> entries;  // all of them; the first is the root's
    std::map<moxui::controls::UI_MultiColumnTreeRow const*, Entry*> byRow;
    std::multimap<QuilloFolder const*, Entry*> byFolder;
    std::deque<Entry*> due;  // those whose list or rows are to be looked at
    bool isScheduled = false;
    bool fetchesAhead = false;
    bool haveRowsChanged = false;
    std::optional<moxcore::geom::PointT<float>> scrollWanted;
};

}  // namespace quillomoxui::view
