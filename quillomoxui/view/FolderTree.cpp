#include "quillomoxui/view/FolderTree.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/utility/Guid.h"
#include "quillomoxui/model/NodePath.h"

namespace quillomoxui::view {

using std::chrono::steady_clock;

namespace {

/// A quarter of a screen's frame: what the properties of the new rows' folders deliver, and the
/// layout, come on top.
constexpr std::chrono::milliseconds kSlice{4};
/// After how many rows the clock is looked at.
constexpr std::size_t kRowsPerLook = 32;

bool AreSame(QuilloFolder const& a, QuilloFolder const& b) {
    if (&a == &b) return true;
    auto const id = a.GetID();
    return !id.IsNull() && id == b.GetID();
}

/// Asks `folder` for its children, once.
void Fetch(QuilloFolder& folder) {
    if (folder.GetFetchChildrenState() == FetchChildrenState::NotFetched) folder.FetchChildren();
}

}  // namespace

/// One row and what it shows.
struct FolderTree::Entry {
    FolderPtr folder;
    RowPtr row;                    // null until it is made
    std::vector<Entry*> children;  // in the order of the list that they were taken from
    std::size_t rowCount = 0;      // how many of the children have rows
    std::shared_ptr<BindingHandle> listBinding;
    std::shared_ptr<BindingHandle> stateBinding;  // while `kept` is needed
    /// The folder whose list the children were taken from, and its ancestors, while the list of the
    /// one that took its place is on its way. What is below can still be chosen, and does not keep
    /// its ancestors itself.
    NodeVector<QuilloNode> kept;
    bool isOpen = false;  // while the rows are made anew
    bool isDue = false;
    bool isReachable = false;
};

FolderTree::FolderTree(boost::intrusive_ptr<moxui::controls::UI_MultiColumnTree> tree,
                       std::function<void()> onRowsChanged)
    : tree(std::move(tree)), onRowsChanged(std::move(onRowsChanged)) {}

FolderTree::~FolderTree() = default;

void FolderTree::SetRoot(FolderPtr const& root) {
    due.clear();
    byRow.clear();
    byFolder.clear();
    entries.clear();
    scrollWanted.reset();
    tree->DeleteAllRows();
    haveRowsChanged = true;
    if (!root) return;
    MakeRow(NewEntry(root), nullptr);
    Work();
}

void FolderTree::ReplaceRoot(FolderPtr const& root) {
    if (entries.empty() || entries.front()->folder == root) return;
    PutFolder(*entries.front(), root);
    Attend(*entries.front());
    Schedule();
}

void FolderTree::FetchAhead() {
    if (std::exchange(fetchesAhead, true)) return;
    for (auto const& entry : entries)
        Fetch(*entry->folder);
}

FolderTree::FolderPtr FolderTree::GetRoot() const {
    return entries.empty() ? nullptr : entries.front()->folder;
}

bool FolderTree::IsRoot(FolderPtr const& folder) const {
    auto const root = GetRoot();
    return root && folder ? AreSame(*root, *folder) : root == folder;
}

FolderTree::RowPtr FolderTree::GetRootRow() const {
    return entries.empty() ? nullptr : entries.front()->row;
}

FolderTree::RowPtr FolderTree::GetRowForFolder(FolderPtr const& folder) const {
    auto const found = byFolder.find(folder.get());
    return found == byFolder.end() ? nullptr : found->second->row;
}

FolderTree::FolderPtr FolderTree::GetFolder(RowPtr const& row) const {
    auto const found = byRow.find(row.get());
    return found == byRow.end() ? nullptr : found->second->folder;
}

FolderTree::Entry& FolderTree::NewEntry(FolderPtr const& folder) {
    auto& entry = *entries.emplace_back(std::make_unique<Entry>());
    entry.folder = folder;
    byFolder.emplace(folder.get(), &entry);
    return entry;
}

/// A function for a property of the folder that `entry` shows.
auto FolderTree::OnChangeOf(Entry const& entry) {
    return [weakSelf = std::weak_ptr<FolderTree>(Share(this)),
            folder = entry.folder.get()](auto const&) {
        if (auto const self = weakSelf.lock()) self->OnListChanged(folder);
    };
}

/// Has `entry` show `folder` in the place of the one before.
void FolderTree::PutFolder(Entry& entry, FolderPtr const& folder) {
    auto const [first, last] = byFolder.equal_range(entry.folder.get());
    auto const place =
        std::find_if(first, last, [&](auto const& pair) { return pair.second == &entry; });
    if (place != last) byFolder.erase(place);
    byFolder.emplace(folder.get(), &entry);

    if (!entry.children.empty() && entry.kept.empty()) entry.kept = WithAncestors(entry.folder);
    entry.folder = folder;
    entry.listBinding.reset();
    entry.stateBinding.reset();
    haveRowsChanged = true;
}

/// Has the folder of `entry` watched, fetched if that is due, and its list looked at.
void FolderTree::Attend(Entry& entry) {
    if (!entry.listBinding)
        entry.listBinding = static_cast<FoldersNotifyingPropertyHost&>(*entry.folder)
                                .BindValueChanged(OnChangeOf(entry));
    // An empty list that comes changes nothing but the state.
    if (!entry.kept.empty() && !entry.stateBinding)
        entry.stateBinding = static_cast<FetchChildrenStateNotifyingPropertyHost&>(*entry.folder)
                                 .BindValueChanged(OnChangeOf(entry));
    if (fetchesAhead) Fetch(*entry.folder);
    if (!std::exchange(entry.isDue, true)) due.push_back(&entry);
}

void FolderTree::OnListChanged(QuilloFolder const* folder) {
    auto const [first, last] = byFolder.equal_range(folder);
    for (auto place = first; place != last; ++place)
        if (place->second->row) Attend(*place->second);
    Schedule();
}

void FolderTree::Schedule() {
    if (due.empty() || std::exchange(isScheduled, true)) return;
    moxcore::threads::AsyncCallFromMainThread(
        [weakSelf = std::weak_ptr<FolderTree>(Share(this))] {
            auto const self = weakSelf.lock();
            if (!self) return;
            self->isScheduled = false;
            self->Work();
        },
        0);
}

void FolderTree::Work() {
    auto const end = steady_clock::now() + kSlice;
    while (!due.empty() && steady_clock::now() < end) {
        auto& entry = *due.front();
        due.pop_front();
        entry.isDue = false;
        if (TakeIn(entry, end)) continue;
        entry.isDue = true;
        due.push_front(&entry);
    }
    if (std::exchange(haveRowsChanged, false)) {
        tree->LayoutAfterAppendRow(GetRootRow(), true);
        onRowsChanged();
    }
    if (due.empty() && scrollWanted) tree->SetScrollPosition(*std::exchange(scrollWanted, {}));
    Schedule();
}

/// Brings what is shown below `entry` in line with its folder's list. False when the time is over
/// before all is done.
bool FolderTree::TakeIn(Entry& entry, TimePoint end) {
    auto const list = entry.folder->GetFolders();
    bool const isPending = !entry.kept.empty() && list.empty() &&
                           entry.folder->GetFetchChildrenState() != FetchChildrenState::Fetched;
    if (isPending) return MakeRows(entry, end);

    auto& children = entry.children;
    std::size_t known = 0;
    while (known < children.size() && known < list.size() && children[known]->folder == list[known])
        ++known;
    if (known == children.size()) {
        for (; known < list.size(); ++known)
            children.push_back(&NewEntry(list[known]));
    } else if (std::equal(children.begin(), children.end(), list.begin(), list.end(),
                          [](auto const* child, auto const& folder) {
                              return AreSame(*child->folder, *folder);
                          })) {
        for (; known < list.size(); ++known) {
            if (known % kRowsPerLook == 0 && steady_clock::now() >= end) return false;
            if (children[known]->folder == list[known]) continue;
            PutFolder(*children[known], list[known]);
            Attend(*children[known]);
        }
    } else {
        Merge(entry, list);
        MakeAllRowsAnew();
    }
    entry.kept.clear();
    entry.stateBinding.reset();
    return MakeRows(entry, end);
}

/// Makes the children of `entry` those of `list`. One that is there already stays as it is.
void FolderTree::Merge(Entry& entry, NodeVector<QuilloFolder> const& list) {
    std::unordered_map<QuilloFolder const*, Entry*> byObject;
    std::unordered_map<moxcore::utility::Guid, Entry*> byID;
    for (auto* const child : entry.children) {
        auto const id = child->folder->GetID();
        if (id.IsNull())
            byObject.emplace(child->folder.get(), child);
        else
            byID.emplace(id, child);
    }
    auto const take = [](auto& map, auto const& key) {
        auto const found = map.extract(key);
        return found ? found.mapped() : nullptr;
    };
    entry.children.clear();
    for (auto const& folder : list) {
        auto const id = folder->GetID();
        auto* const child = id.IsNull() ? take(byObject, folder.get()) : take(byID, id);
        if (child && child->folder != folder) PutFolder(*child, folder);
        entry.children.push_back(child ? child : &NewEntry(folder));
    }
    DropUnreachable();
}

void FolderTree::DropUnreachable() {
    std::vector<Entry*> reached{entries.front().get()};
    for (std::size_t i = 0; i < reached.size(); ++i) {
        reached[i]->isReachable = true;
        reached.insert(reached.end(), reached[i]->children.begin(), reached[i]->children.end());
    }
    std::erase_if(byFolder, [](auto const& pair) { return !pair.second->isReachable; });
    std::erase_if(entries, [](auto const& entry) { return !entry->isReachable; });
    for (auto* const entry : reached)
        entry->isReachable = false;
}

void FolderTree::MakeAllRowsAnew() {
    tree->LayoutAfterAppendRow(GetRootRow(), true);  // which opens what is to be open
    if (!scrollWanted) scrollWanted = tree->GetScrollPosition();
    for (auto const& entry : entries) {
        if (entry->row) entry->isOpen = tree->IsRowOpen(entry->row);
        entry->row.reset();
        entry->rowCount = 0;
        entry->isDue = false;
    }
    due.clear();
    byRow.clear();
    tree->DeleteAllRows();
    MakeRow(*entries.front(), nullptr);
}

void FolderTree::MakeRow(Entry& entry, RowPtr const& parent) {
    entry.row = tree->CreateAndAppendRow(parent, true, entry.isOpen);
    byRow[entry.row.get()] = &entry;
    Attend(entry);
    haveRowsChanged = true;
}

/// Makes the rows of the children of `entry` that have none. False when the time is over before.
bool FolderTree::MakeRows(Entry& entry, TimePoint end) {
    if (!entry.row) return true;
    for (; entry.rowCount < entry.children.size(); ++entry.rowCount) {
        if (entry.rowCount % kRowsPerLook == kRowsPerLook - 1 && steady_clock::now() >= end)
            return false;
        MakeRow(*entry.children[entry.rowCount], entry.row);
    }
    return true;
}

}  // namespace quillomoxui::view
