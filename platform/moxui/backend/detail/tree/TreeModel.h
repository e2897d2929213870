#pragma once

#include <QAbstractItemModel>
#include <functional>
#include <vector>

#include "moxcore/string/UTF16String.h"
#include "moxui/controls/UI_MultiColumnTreeRow.h"

namespace moxui::backend {

/// A tree's rows, as Qt's view sees them. Rows are appended silently and published to the view
/// in a batch: one notification for each known row that has new children, however many they are
/// and however deep the tree below them is.
class TreeModel : public QAbstractItemModel {
public:
    using Row = controls::UI_MultiColumnTreeRow;
    using RowPtr = boost::intrusive_ptr<Row>;

    explicit TreeModel(int columnCount);
    ~TreeModel() override;

    RowPtr Append(Row* parent, bool selectable, bool open);
    void ShowAppended();
    [[nodiscard]] bool HasAppended() const { return firstNew < rows.size(); }
    void Clear();

    [[nodiscard]] std::size_t RowCount() const { return rows.size(); }
    [[nodiscard]] QModelIndex IndexOf(Row const& row, int column = 0) const;
    [[nodiscard]] static Row* RowAt(QModelIndex const& index);

    [[nodiscard]] static int LevelOf(Row const& row) { return row.level; }
    [[nodiscard]] static bool IsOpen(Row const& row) { return row.isOpen; }
    void SetOpen(Row& row, bool open);
    /// The rows among those shown last that are to be open.
    [[nodiscard]] std::vector<Row*> TakeRowsToOpen();
    /// The deepest level to which rows are open, whether their parents are open or not.
    [[nodiscard]] int DeepestOpenLevel() const;

    /// The row that is drawn after `row` when all is open; null after the last one below `top`.
    [[nodiscard]] static Row* NextBelow(Row const& top, Row& row);

    std::function<moxcore::string::UTF16String(RowPtr const&)> name;
    /// As it can be shown on one line; empty without a function that names rows.
    [[nodiscard]] QString NameOf(Row const& row) const;

    int columnCount(QModelIndex const& parent = {}) const override;
    int rowCount(QModelIndex const& parent = {}) const override;
    bool hasChildren(QModelIndex const& parent = {}) const override;
    QModelIndex index(int row, int column, QModelIndex const& parent = {}) const override;
    QModelIndex parent(QModelIndex const& child) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    QVariant data(QModelIndex const& index, int role) const override;

private:
    [[nodiscard]] Row& RowOrRoot(QModelIndex const& index) const;

    RowPtr const root;
    int const columns;
    std::vector<RowPtr> rows;      // all of them, in the order of their appending
    std::size_t firstNew = 0;      // among rows: from here on the view does not know them
    std::vector<Row*> grown;       // rows that the view knows and whose last children it does not
    std::vector<Row*> toOpen;      // among the new ones
    std::vector<int> openAtLevel;  // how many rows of each level are open
};

}  // namespace moxui::backend
