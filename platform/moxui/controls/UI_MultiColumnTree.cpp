#include "moxui/controls/UI_MultiColumnTree.h"

#include <cmath>
#include <utility>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/tree/TreeWidget.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"

namespace moxui::controls {
namespace {

using backend::TreeModel;
using backend::TreeWidget;

TreeWidget* WidgetOf(UI_MultiColumnTree const& tree) {
    return tree.GetPeer().GetWidgetAs<TreeWidget>();
}

/// Null unless `row` is one of the tree's: a deleted row is none.
TreeWidget* WidgetWith(UI_MultiColumnTree const& tree, UI_MultiColumnTree::RowPtr const& row) {
    return row && TreeModel::LevelOf(*row) > 0 ? WidgetOf(tree) : nullptr;
}

}  // namespace

UI_MultiColumnTree::UI_MultiColumnTree(int columnCount)
    : UI_ControlView(backend::MakePeer<TreeWidget>(columnCount)) {}

UI_MultiColumnTree::~UI_MultiColumnTree() {
    // An assistive tool may ask the widget, which lives on for a moment.
    if (auto* const widget = WidgetOf(*this)) widget->Model().name = nullptr;
}

void UI_MultiColumnTree::SetSingleSelection(bool single) {
    if (auto* const widget = WidgetOf(*this))
        widget->setSelectionMode(single ? QAbstractItemView::SingleSelection
                                        : QAbstractItemView::ExtendedSelection);
}

void UI_MultiColumnTree::SetEmptySelectionSupported(bool supported) {
    if (auto* const widget = WidgetOf(*this)) widget->isEmptySelectionSupported = supported;
}

void UI_MultiColumnTree::SetDrawCellFunction(DrawCellFunction function) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    if (!function) {
        widget->drawCell = nullptr;
        return;
    }
    widget->drawCell = [function = std::move(function)](drawbot::Drawbot& drawbot,
                                                        RowPtr const& row, int column,
                                                        QRectF const& cell) {
        backend::CallFromQt([&] { function(&drawbot, row, column, backend::FromQRectF(cell)); });
    };
}

void UI_MultiColumnTree::SetRowNameFunction(RowNameFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->Model().name = [function = std::move(function)](RowPtr const& row) {
            moxcore::string::UTF16String name;
            backend::CallFromQt([&] { name = function(row); });
            return name;
        };
}

void UI_MultiColumnTree::SetRowsSelectionChangedFunction(SelectionFunction function) {
    if (auto* const widget = WidgetOf(*this)) widget->onSelection = std::move(function);
}

void UI_MultiColumnTree::SetRowDisclosureChangedFunction(DisclosureFunction function) {
    if (auto* const widget = WidgetOf(*this)) widget->onDisclosure = std::move(function);
}

void UI_MultiColumnTree::SetRowActivatedFunction(RowFunction function) {
    if (auto* const widget = WidgetOf(*this)) widget->onActivated = std::move(function);
}

UI_MultiColumnTree::RowPtr UI_MultiColumnTree::CreateAndAppendRow(RowPtr const& parent,
                                                                  bool selectable, bool open) {
    auto* const widget = parent ? WidgetWith(*this, parent) : WidgetOf(*this);
    return widget ? widget->Append(parent.get(), selectable, open) : nullptr;
}

void UI_MultiColumnTree::LayoutAfterAppendRow(RowPtr const&, bool) {
    if (auto* const widget = WidgetOf(*this)) widget->ShowAppended();
}

void UI_MultiColumnTree::DeleteAllRows() {
    if (auto* const widget = WidgetOf(*this)) widget->DeleteAllRows();
}

std::size_t UI_MultiColumnTree::GetRowCount() const {
    auto* const widget = WidgetOf(*this);
    return widget ? widget->Model().RowCount() : 0;
}

void UI_MultiColumnTree::OpenRow(RowPtr const& row) {
    if (auto* const widget = WidgetWith(*this, row)) widget->Open(*row);
}

bool UI_MultiColumnTree::IsRowOpen(RowPtr const& row) const {
    return row && TreeModel::IsOpen(*row);
}

void UI_MultiColumnTree::SelectRow(RowPtr const& row, bool select, bool exclusively,
                                   bool moveFocus) {
    auto* const widget = WidgetWith(*this, row);
    if (!widget) return;
    QItemSelectionModel::SelectionFlags how =
        select ? QItemSelectionModel::Select : QItemSelectionModel::Deselect;
    bool const isSingle = widget->selectionMode() == QAbstractItemView::SingleSelection;
    if (select && (exclusively || isSingle)) how |= QItemSelectionModel::Clear;
    widget->Select(*row, how, moveFocus);
}

bool UI_MultiColumnTree::IsRowSelected(RowPtr const& row) const {
    auto const* const widget = WidgetWith(*this, row);
    return widget && widget->IsSelected(*row);
}

std::vector<UI_MultiColumnTree::RowPtr> UI_MultiColumnTree::GetSelectedRows() const {
    auto const* const widget = WidgetOf(*this);
    return widget ? widget->SelectedRows() : std::vector<RowPtr>();
}

void UI_MultiColumnTree::ScrollRowIntoView(RowPtr const& row, bool toTheMiddle, int, bool) {
    if (auto* const widget = WidgetWith(*this, row))
        widget->ScrollToRow(*row, toTheMiddle ? QAbstractItemView::PositionAtCenter
                                              : QAbstractItemView::EnsureVisible);
}

moxcore::geom::PointT<float> UI_MultiColumnTree::GetScrollPosition() const {
    auto* const widget = WidgetOf(*this);
    if (!widget) return {};
    auto const position = widget->ScrollPosition();
    return {static_cast<float>(position.x()), static_cast<float>(position.y())};
}

void UI_MultiColumnTree::SetScrollPosition(moxcore::geom::PointT<float> const& position) {
    if (auto* const widget = WidgetOf(*this))
        widget->SetScrollPosition(QPointF(position.x, position.y).toPoint());
}

void UI_MultiColumnTree::SetColumnWidth(int column, float width) {
    if (auto* const widget = WidgetOf(*this))
        widget->SetMaximumColumnWidth(column, static_cast<int>(std::lround(width)));
}

void UI_MultiColumnTree::SetDefaultRowHeight(float height) {
    if (auto* const widget = WidgetOf(*this))
        widget->SetRowHeight(static_cast<int>(std::lround(height)));
}

}  // namespace moxui::controls
