#pragma once

#include <QTreeView>
#include <functional>
#include <vector>

#include "moxui/backend/detail/tree/TreeModel.h"
#include "moxui/backend/detail/tree/TreeOpener.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/drawbot/Drawbot.h"

namespace moxui::backend {

/// Qt's tree view over our rows. It draws rows in the theme's look and leaves their cells to
/// `drawCell`, which draws as if everything went from left to right; it calls the functions below
/// for what the user does only, and none once its node is gone.
class TreeWidget : public QTreeView, public NodeLink {
public:
    using Row = TreeModel::Row;
    using RowPtr = TreeModel::RowPtr;

    explicit TreeWidget(int columnCount);
    ~TreeWidget() override;

    std::function<void(drawbot::Drawbot&, RowPtr const&, int column, QRectF const& cell)> drawCell;
    std::function<void(std::vector<RowPtr> const&)> onSelection;
    std::function<void(RowPtr const&, bool open)> onDisclosure;
    std::function<void(RowPtr const&)> onActivated;
    bool isEmptySelectionSupported = true;

    [[nodiscard]] TreeModel& Model() { return rows; }
    RowPtr Append(Row* parent, bool selectable, bool open);
    void ShowAppended();
    void DeleteAllRows();

    void Open(Row& row);
    void Select(Row& row, QItemSelectionModel::SelectionFlags how, bool moveFocus);
    [[nodiscard]] bool IsSelected(Row const& row) const;
    [[nodiscard]] std::vector<RowPtr> SelectedRows() const;
    void ScrollToRow(Row& row, ScrollHint hint);

    /// Has it laid out by the event loop.
    void ScheduleLayout() { scheduleDelayedItemsLayout(); }

    /// How far it is scrolled; the tree is laid out for it.
    [[nodiscard]] QPoint ScrollPosition();
    void SetScrollPosition(QPoint const& position);

    void SetMaximumColumnWidth(int column, int width);
    void SetRowHeight(int height);

    int sizeHintForColumn(int column) const override;
    void doItemsLayout() override;

protected:
    void drawRow(QPainter* painter, QStyleOptionViewItem const& option,
                 QModelIndex const& index) const override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void scrollTo(QModelIndex const& index, ScrollHint hint) override;
    void selectionChanged(QItemSelection const& selected,
                          QItemSelection const& deselected) override;
    QItemSelectionModel::SelectionFlags selectionCommand(QModelIndex const& index,
                                                         QEvent const* event) const override;

private:
    class RowDelegate;

    /// As if everything went from left to right.
    [[nodiscard]] QRect CellRect(QModelIndex const& index, int column, QRect const& row) const;
    /// Where `place` is in the tree's own direction.
    [[nodiscard]] QRect Visual(QRect const& place) const;
    void OnExpanded(QModelIndex const& index, bool open);
    void GoIn(QModelIndex const& current);
    void GoOut(QModelIndex const& current);
    void OpenAllBelow(Row& row);
    void FitColumns();
    void SetHovered(QModelIndex const& index);
    void ShowNameOf(QModelIndex const& index, QPoint const& globalPosition);

    TreeModel rows;
    std::vector<int> columnWidths;  // at most; 0 where none was set
    QPersistentModelIndex hovered;
    int programs = 0;  // how many operations of the program are under way
    bool willShowAppended = false;
    TreeOpener opener{*this};
};

}  // namespace moxui::backend
