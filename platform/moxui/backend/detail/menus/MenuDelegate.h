#pragma once

#include <QStyledItemDelegate>

#include "moxui/backend/detail/menus/MenuModel.h"

namespace moxui::backend {

/// Draws the entries of a drop-down menu.
class MenuDelegate : public QStyledItemDelegate {
public:
    /// `entries` outlives it.
    MenuDelegate(MenuModel const& entries, QObject* parent);

    /// The chosen entry, which is set apart from the others; -1 for none.
    int chosen = -1;

    /// How wide the menu is that shows all texts whole.
    [[nodiscard]] int WidestEntry(QFont const& font) const;

    QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override;
    void paint(QPainter* painter, QStyleOptionViewItem const& option,
               QModelIndex const& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, QStyleOptionViewItem const& option,
                   QModelIndex const& index) override;

private:
    [[nodiscard]] QFont Font(QStyleOptionViewItem const& option, int row) const;
    /// The entry's text as far as it has room, and that room.
    [[nodiscard]] std::pair<FittedText, QRectF> Fitted(QStyleOptionViewItem const& option,
                                                       int row) const;

    MenuModel const& entries;
};

/// Paints `picture` in the middle of `place`, smaller where it does not fit.
void PaintPicture(QPainter& painter, QRectF const& place, drawbot::ImageInterface const& picture,
                  Qt::LayoutDirection direction);

}  // namespace moxui::backend
