#include "moxui/backend/detail/tree/TreeModel.h"

#include <QString>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/FittedText.h"

namespace moxui::backend {
namespace {

QString LevelText(int level) {
    return ToQString(moxcore::config::Localizer::Localize(
                         "$$$/Vistrel/moxui/controls/MultiColumnTree/Level=Level %1"))
        .arg(level);
}

}  // namespace

TreeModel::TreeModel(int columnCount) : root(new Row), columns(columnCount) {
    root->isNew = false;
}

TreeModel::~TreeModel() {
    Clear();
}

TreeModel::RowPtr TreeModel::Append(Row* parent, bool selectable, bool open) {
    if (!parent) parent = root.get();
    RowPtr row(new Row);
    row->parent = parent;
    row->place = static_cast<int>(parent->childCount);
    row->level = parent->level + 1;
    row->isSelectable = selectable;

    bool const knew = parent->childCount == static_cast<std::size_t>(parent->shownChildCount);
    if (!parent->isNew && knew) grown.push_back(parent);
    (parent->lastChild ? parent->lastChild->nextSibling : parent->firstChild) = row.get();
    parent->lastChild = row.get();
    ++parent->childCount;

    if (open) toOpen.push_back(row.get());
    rows.push_back(row);
    return row;
}

void TreeModel::ShowAppended() {
    // The view reaches these only through their parents, so that they may know of their children
    // before it does.
    for (; firstNew < rows.size(); ++firstNew) {
        auto& row = *rows[firstNew];
        row.isNew = false;
        row.shownChildCount = static_cast<int>(row.childCount);
    }
    for (auto* const parent : std::exchange(grown, {})) {
        auto const last = static_cast<int>(parent->childCount) - 1;
        beginInsertRows(IndexOf(*parent), parent->shownChildCount, last);
        parent->shownChildCount = last + 1;
        endInsertRows();
    }
}

void TreeModel::Clear() {
    beginResetModel();
    for (auto const& row : rows)
        row->Detach();
    root->Detach();
    root->isNew = false;
    rows.clear();
    firstNew = 0;
    grown.clear();
    toOpen.clear();
    openAtLevel.clear();
    endResetModel();
}

QModelIndex TreeModel::IndexOf(Row const& row, int column) const {
    if (!row.parent) return {};
    return createIndex(row.place, column, &row);
}

TreeModel::Row* TreeModel::RowAt(QModelIndex const& index) {
    return static_cast<Row*>(index.internalPointer());
}

TreeModel::Row& TreeModel::RowOrRoot(QModelIndex const& index) const {
    return index.isValid() ? *RowAt(index) : *root;
}

void TreeModel::SetOpen(Row& row, bool open) {
    if (row.isOpen == open) return;
    row.isOpen = open;
    auto const level = static_cast<std::size_t>(row.level);
    if (openAtLevel.size() <= level) openAtLevel.resize(level + 1);
    openAtLevel[level] += open ? 1 : -1;
}

std::vector<TreeModel::Row*> TreeModel::TakeRowsToOpen() {
    return std::exchange(toOpen, {});
}

int TreeModel::DeepestOpenLevel() const {
    for (auto level = openAtLevel.size(); level > 0; --level)
        if (openAtLevel[level - 1] > 0) return static_cast<int>(level);
    return 1;
}

TreeModel::Row* TreeModel::NextBelow(Row const& top, Row& row) {
    if (row.firstChild) return row.firstChild;
    for (auto* at = &row; at != &top; at = at->parent)
        if (at->nextSibling) return at->nextSibling;
    return nullptr;
}

QString TreeModel::NameOf(Row const& row) const {
    FittedText text;
    if (name) text.SetText(name(const_cast<Row*>(&row)));
    return text.GetWhole();
}

int TreeModel::columnCount(QModelIndex const&) const {
    return columns;
}

int TreeModel::rowCount(QModelIndex const& parent) const {
    return parent.column() > 0 ? 0 : RowOrRoot(parent).shownChildCount;
}

bool TreeModel::hasChildren(QModelIndex const& parent) const {
    return rowCount(parent) > 0;
}

QModelIndex TreeModel::index(int row, int column, QModelIndex const& parent) const {
    auto const& above = RowOrRoot(parent);
    if (row < 0 || row >= above.shownChildCount || column < 0 || column >= columns) return {};
    return createIndex(row, column, above.ChildAt(static_cast<std::size_t>(row)));
}

QModelIndex TreeModel::parent(QModelIndex const& child) const {
    return child.isValid() ? IndexOf(*RowAt(child)->parent) : QModelIndex();
}

Qt::ItemFlags TreeModel::flags(QModelIndex const& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return RowAt(index)->isSelectable ? Qt::ItemIsEnabled | Qt::ItemIsSelectable
                                      : Qt::ItemFlags(Qt::ItemIsEnabled);
}

QVariant TreeModel::data(QModelIndex const& index, int role) const {
    if (!index.isValid()) return {};
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return NameOf(*RowAt(index));
        case Qt::AccessibleDescriptionRole:
            return LevelText(RowAt(index)->level);
        default:
            return {};
    }
}

}  // namespace moxui::backend
