// How a tree draws its rows.

#include <QHeaderView>
#include <QPainter>
#include <algorithm>

#include "moxui/backend/detail/drawing/Chevron.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/tree/TreeWidget.h"
#include "moxui/controls/UI_ControlView.h"

namespace moxui::backend {

namespace Key = skins::ThemeColor;
using Size = skins::ThemeSize;

QRect TreeWidget::CellRect(QModelIndex const& index, int column, QRect const& row) const {
    QRect cell(header()->sectionPosition(column) - header()->offset(), row.y(), columnWidth(column),
               row.height());
    cell.setTop(cell.top() + WholeSize(Size::RowMargin));
    if (column == 0)
        cell.setLeft(cell.left() + TreeModel::LevelOf(*TreeModel::RowAt(index)) * indentation());
    // What lies before the tree's first edge is scrolled off; what lies behind the other one would
    // be cut.
    cell.setRight(std::min(cell.right(), viewport()->width() - 1));
    return cell;
}

QRect TreeWidget::Visual(QRect const& place) const {
    return QStyle::visualRect(layoutDirection(), viewport()->rect(), place);
}

void TreeWidget::drawRow(QPainter* painter, QStyleOptionViewItem const& option,
                         QModelIndex const& index) const {
    if (!node) return;
    auto const& colors = static_cast<controls::UI_ControlView const&>(*node);
    auto const color = [&](int key) { return ToQColor(colors.GetColor(key)); };
    auto const* const row = TreeModel::RowAt(index);
    QRect const place(0, option.rect.y(), viewport()->width(), option.rect.height());
    bool const isSelected = selectionModel()->isSelected(index);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (isSelected || hovered == index) {
        auto ground = color(Key::kHighlight);
        if (!isSelected) ground.setAlphaF(0.55F);
        painter->setPen(Qt::NoPen);
        painter->setBrush(ground);
        auto const radius = skins::ThemeProvider::Get().GetSize(Size::CornerRadius);
        painter->drawRoundedRect(place, radius, radius);
    }
    if (rows.hasChildren(index)) {
        auto const cell = CellRect(index, 0, place);
        QRect const arrow(cell.left() - indentation(), place.y(), indentation(), place.height());
        auto const direction = isExpanded(index) ? ChevronDirection::Down
                               : isRightToLeft() ? ChevronDirection::Left
                                                 : ChevronDirection::Right;
        PaintChevron(*painter, QRectF(Visual(arrow)).center(), direction,
                     color(isEnabled() ? Key::kIcon : Key::kDisabledText));
    }
    painter->restore();

    for (int column = 0; column < rows.columnCount(); ++column) {
        auto const cell = CellRect(index, column, place);
        if (!drawCell || cell.width() <= 0) continue;
        painter->save();
        {
            QtDrawbot drawbot(*painter);
            if (isRightToLeft()) drawbot.Mirror(viewport()->width());
            drawCell(drawbot, const_cast<Row*>(row), column, QRectF(cell));
        }
        painter->restore();
    }
    if (hasFocus() && currentIndex() == index) PaintFocusRing(*painter, QRectF(place));
}

void TreeWidget::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    if (!hasFocus() || currentIndex().isValid()) return;
    QPainter painter(viewport());
    PaintFocusRing(painter, QRectF(viewport()->rect()));
}

}  // namespace moxui::backend
