#include "moxui/backend/detail/tree/TreeWidget.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <algorithm>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/menus/ListStyle.h"
#include "moxui/backend/detail/windows/ToolTip.h"

namespace moxui::backend {
namespace {

using Size = skins::ThemeSize;

}  // namespace

/// Gives the rows their height; they draw themselves in drawRow.
class TreeWidget::RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(QStyleOptionViewItem const&, QModelIndex const&) const override {
        return {0, height};
    }

    int height = WholeSize(Size::RowHeight);
};

TreeWidget::TreeWidget(int columnCount)
    : rows(columnCount), columnWidths(static_cast<std::size_t>(columnCount)) {
    setStyle(&ListStyle::Get());
    verticalScrollBar()->setStyle(&ListStyle::Get());
    horizontalScrollBar()->setStyle(&ListStyle::Get());
    setFrameShape(QFrame::NoFrame);
    setHeaderHidden(true);
    header()->setStretchLastSection(false);
    header()->setMinimumSectionSize(0);
    setUniformRowHeights(true);
    setIndentation(WholeSize(Size::RowIndentation));
    setSelectionMode(SingleSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setItemDelegate(new RowDelegate(this));
    setModel(&rows);
    verticalScrollBar()->setSingleStep(WholeSize(Size::ScrollStep));
    connect(this, &QTreeView::expanded,
            [this](QModelIndex const& index) { OnExpanded(index, true); });
    connect(this, &QTreeView::collapsed,
            [this](QModelIndex const& index) { OnExpanded(index, false); });
}

TreeWidget::~TreeWidget() {
    // The rows go before the view does.
    setModel(nullptr);
}

TreeWidget::RowPtr TreeWidget::Append(Row* parent, bool selectable, bool open) {
    if (!willShowAppended) {
        willShowAppended = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                willShowAppended = false;
                ShowAppended();
            },
            Qt::QueuedConnection);
    }
    return rows.Append(parent, selectable, open);
}

void TreeWidget::ShowAppended() {
    if (!rows.HasAppended()) return;
    rows.ShowAppended();
    for (auto* const row : rows.TakeRowsToOpen())
        Open(*row);
}

void TreeWidget::DeleteAllRows() {
    QScopedValueRollback const program(programs, programs + 1);
    opener.Stop();
    rows.Clear();
    FitColumns();
}

void TreeWidget::Open(Row& row) {
    ShowAppended();
    QScopedValueRollback const program(programs, programs + 1);
    expand(rows.IndexOf(row));
}

void TreeWidget::Select(Row& row, QItemSelectionModel::SelectionFlags how, bool moveFocus) {
    ShowAppended();
    QScopedValueRollback const program(programs, programs + 1);
    auto const index = rows.IndexOf(row);
    // Qt would scroll to it, and open what it lies in.
    setAutoScroll(false);
    if (moveFocus)
        selectionModel()->setCurrentIndex(index, how | QItemSelectionModel::Rows);
    else
        selectionModel()->select(index, how | QItemSelectionModel::Rows);
    setAutoScroll(true);
}

bool TreeWidget::IsSelected(Row const& row) const {
    return selectionModel()->isSelected(rows.IndexOf(row));
}

std::vector<TreeWidget::RowPtr> TreeWidget::SelectedRows() const {
    std::vector<RowPtr> selected;
    for (auto const& index : selectionModel()->selectedRows())
        selected.emplace_back(TreeModel::RowAt(index));
    return selected;
}

void TreeWidget::ScrollToRow(Row& row, ScrollHint hint) {
    ShowAppended();
    QScopedValueRollback const program(programs, programs + 1);
    scrollTo(rows.IndexOf(row), hint);
}

QPoint TreeWidget::ScrollPosition() {
    ShowAppended();
    executeDelayedItemsLayout();
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void TreeWidget::SetScrollPosition(QPoint const& position) {
    ShowAppended();
    executeDelayedItemsLayout();
    horizontalScrollBar()->setValue(position.x());
    verticalScrollBar()->setValue(position.y());
}

void TreeWidget::SetMaximumColumnWidth(int column, int width) {
    if (column < 0 || column >= rows.columnCount()) return;
    columnWidths[static_cast<std::size_t>(column)] = std::max(0, width);
    FitColumns();
}

void TreeWidget::SetRowHeight(int height) {
    static_cast<RowDelegate*>(itemDelegate())->height = std::max(1, height);
    scheduleDelayedItemsLayout();
}

int TreeWidget::sizeHintForColumn(int column) const {
    return header()->sectionSize(column);
}

void TreeWidget::doItemsLayout() {
    QTreeView::doItemsLayout();
    opener.GoOn();
}

void TreeWidget::FitColumns() {
    // Names end where the tree does, so that a column needs more room than there is only for rows
    // that begin far from its edge.
    int const seen = viewport()->width();
    for (int column = 0; column < rows.columnCount(); ++column) {
        int const most = columnWidths[static_cast<std::size_t>(column)];
        int const indented = column == 0 ? rows.DeepestOpenLevel() * indentation() + seen / 2 : 0;
        int const width = std::max(seen, indented);
        header()->resizeSection(column, most > 0 ? std::min(most, width) : width);
    }
}

void TreeWidget::OnExpanded(QModelIndex const& index, bool open) {
    RowPtr const row(TreeModel::RowAt(index));
    rows.SetOpen(*row, open);
    FitColumns();
    if (!node || programs > 0 || !onDisclosure) return;
    auto const function = onDisclosure;
    CallFromQt([&] { function(row, open); });
}

void TreeWidget::GoIn(QModelIndex const& current) {
    if (!rows.hasChildren(current)) return;
    if (isExpanded(current))
        setCurrentIndex(rows.index(0, 0, current));
    else
        expand(current);
}

void TreeWidget::GoOut(QModelIndex const& current) {
    if (isExpanded(current) && rows.hasChildren(current))
        collapse(current);
    else if (current.parent().isValid())
        setCurrentIndex(current.parent());
}

void TreeWidget::keyPressEvent(QKeyEvent* event) {
    auto const current = currentIndex().siblingAtColumn(0);
    bool const isPlain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (!node || !current.isValid() || !isPlain) {
        QTreeView::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
        case Qt::Key_Right:
        case Qt::Key_Left:
            if ((event->key() == Qt::Key_Left) == isRightToLeft())
                GoIn(current);
            else
                GoOut(current);
            return;
        case Qt::Key_Asterisk:
            OpenAllBelow(*TreeModel::RowAt(current));
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!onActivated) break;
            if (auto const function = onActivated; !event->isAutoRepeat())
                CallFromQt([&] { function(TreeModel::RowAt(current)); });
            return;
        default:
            break;
    }
    QTreeView::keyPressEvent(event);
}

void TreeWidget::OpenAllBelow(Row& row) {
    // A key that is held comes again and again.
    if (opener.IsOpening()) return;
    ShowAppended();
    if (row.GetChildCount() == 0) return;
    RowPtr const kept(&row);
    expand(rows.IndexOf(row));
    // The handler may delete the rows.
    if (TreeModel::LevelOf(row) > 0) opener.Start(row);
}

void TreeWidget::resizeEvent(QResizeEvent* event) {
    FitColumns();
    auto const place = visualRect(currentIndex());
    bool const wasSeen =
        place.isValid() && QRect(QPoint(), event->oldSize()).contains(place.center());
    QTreeView::resizeEvent(event);
    // A scroll bar may come and cover the row that has the focus.
    if (wasSeen) scrollTo(currentIndex(), EnsureVisible);
}

void TreeWidget::SetHovered(QModelIndex const& index) {
    if (hovered == index) return;
    hovered = index;
    viewport()->update();
}

bool TreeWidget::viewportEvent(QEvent* event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            SetHovered(
                indexAt(static_cast<QHoverEvent*>(event)->position().toPoint()).siblingAtColumn(0));
            break;
        case QEvent::HoverLeave:
            SetHovered({});
            break;
        case QEvent::ToolTip: {
            auto const& help = static_cast<QHelpEvent const&>(*event);
            ShowNameOf(indexAt(help.pos()), help.globalPos());
            return true;
        }
        default:
            break;
    }
    return QTreeView::viewportEvent(event);
}

void TreeWidget::ShowNameOf(QModelIndex const& index, QPoint const& globalPosition) {
    QString toShow;
    if (index.isValid() && node) {
        auto const name = rows.NameOf(*TreeModel::RowAt(index));
        auto const place = visualRect(index);
        auto const cell = CellRect(index, index.column(), place);
        // The cell's drawing is its owner's: a picture before the name and bold letters are
        // allowed for.
        int const width = QFontMetrics(ThemeFont("Bold")).horizontalAdvance(name) +
                          2 * WholeSize(Size::MenuPicture);
        if (width > cell.width() || cell.left() < 0) toShow = name;
    }
    ShowToolTip(globalPosition, toShow, *viewport(), visualRect(index));
}

void TreeWidget::scrollTo(QModelIndex const& index, ScrollHint hint) {
    if (!index.isValid()) return;
    auto* const bar = horizontalScrollBar();
    int const before = bar->value();
    QTreeView::scrollTo(index, hint);
    // Qt leaves the last line of pixels out.
    int const hidden = visualRect(index).bottom() + 1 - viewport()->height();
    if (hint == EnsureVisible && hidden > 0)
        verticalScrollBar()->setValue(verticalScrollBar()->value() + hidden);
    // The view sees to the height only; the row's beginning must be seen, too, with some room for
    // its name.
    int const start = (TreeModel::LevelOf(*TreeModel::RowAt(index)) - 1) * indentation();
    int const most = start;
    int const least = start + indentation() - viewport()->width() / 2;
    bar->setValue(std::clamp(before, std::max(0, std::min(least, most)), most));
}

void TreeWidget::selectionChanged(QItemSelection const& selected,
                                  QItemSelection const& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    if (!node || programs > 0 || !onSelection) return;
    auto const function = onSelection;
    CallFromQt([&] { function(SelectedRows()); });
}

QItemSelectionModel::SelectionFlags TreeWidget::selectionCommand(QModelIndex const& index,
                                                                 QEvent const* event) const {
    using Model = QItemSelectionModel;
    auto const command = QTreeView::selectionCommand(index, event);
    if (isEmptySelectionSupported) return command;
    bool const takesAway = command & (Model::Toggle | Model::Deselect);
    if (takesAway && selectionModel()->isSelected(index) &&
        selectionModel()->selectedRows().size() == 1)
        return Model::NoUpdate;
    bool const selectsNone =
        (command & Model::Clear) && (!(command & (Model::Select | Model::Toggle)) ||
                                     !index.isValid() || !(index.flags() & Qt::ItemIsSelectable));
    return selectsNone ? Model::NoUpdate : command;
}

}  // namespace moxui::backend
