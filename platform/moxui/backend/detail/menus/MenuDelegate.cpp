#include "moxui/backend/detail/menus/MenuDelegate.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/windows/ToolTip.h"

namespace moxui::backend {
namespace {

namespace Key = skins::ThemeColor;
using Size = skins::ThemeSize;

int PictureRoom() {
    return WholeSize(Size::MenuPicture) + WholeSize(Size::ControlGap);
}

QFont Bold(QFont font) {
    font.setBold(true);
    return font;
}

}  // namespace

MenuDelegate::MenuDelegate(MenuModel const& entries, QObject* parent)
    : QStyledItemDelegate(parent), entries(entries) {}

int MenuDelegate::WidestEntry(QFont const& font) const {
    return entries.WidestText(Bold(font)) + 2 * WholeSize(Size::MenuPadding) +
           (entries.HasPictures() ? PictureRoom() : 0);
}

QSize MenuDelegate::sizeHint(QStyleOptionViewItem const&, QModelIndex const&) const {
    return {0, WholeSize(Size::MenuRowHeight)};
}

QFont MenuDelegate::Font(QStyleOptionViewItem const& option, int row) const {
    return row == chosen || entries.IsHeading(row) ? Bold(option.font) : option.font;
}

std::pair<FittedText, QRectF> MenuDelegate::Fitted(QStyleOptionViewItem const& option,
                                                   int row) const {
    int const padding = WholeSize(Size::MenuPadding);
    auto room = option.rect.adjusted(padding, 0, -padding, 0);
    if (entries.HasPictures() && !entries.IsHeading(row)) room.setLeft(room.left() + PictureRoom());
    auto text = entries.Text(row);
    text.Fit(Font(option, row), room.size());
    return {text, QRectF(QStyle::visualRect(option.direction, option.rect, room))};
}

void MenuDelegate::paint(QPainter* painter, QStyleOptionViewItem const& option,
                         QModelIndex const& index) const {
    auto const color = [](int key) { return ToQColor(skins::ThemeProvider::Get().GetColor(key)); };
    int const row = index.row();
    bool const canBeChosen = entries.CanBeChosen(row);
    bool const isHighlighted = canBeChosen && (option.state & QStyle::State_Selected);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (isHighlighted) painter->fillRect(option.rect, color(Key::kHighlight));

    if (auto const picture = entries.Picture(row)) {
        int const side = WholeSize(Size::MenuPicture);
        QRect const place(option.rect.left() + WholeSize(Size::MenuPadding), option.rect.top(),
                          side, option.rect.height());
        if (!canBeChosen) painter->setOpacity(kOpacityOfDisabledPicture);
        PaintPicture(*painter, QRectF(QStyle::visualRect(option.direction, option.rect, place)),
                     *picture, option.direction);
        painter->setOpacity(1);
    }
    painter->setFont(Font(option, row));
    painter->setPen(color(!canBeChosen    ? Key::kDisabledText
                          : isHighlighted ? Key::kSelectedText
                                          : Key::kText));
    auto const [text, room] = Fitted(option, row);
    text.Paint(*painter, room, Qt::AlignLeft, option.direction);
    painter->restore();
}

bool MenuDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             QStyleOptionViewItem const& option, QModelIndex const& index) {
    if (event->type() != QEvent::ToolTip) return false;
    auto const text = Fitted(option, index.row()).first;
    ShowToolTip(event->globalPos(), text.IsElided() ? text.GetWhole() : QString(),
                *view->viewport(), option.rect);
    return true;
}

void PaintPicture(QPainter& painter, QRectF const& place, drawbot::ImageInterface const& picture,
                  Qt::LayoutDirection direction) {
    auto const size = picture.GetSize();
    if (size.x <= 0 || size.y <= 0) return;
    qreal const scale = std::min({1.0, place.width() / size.x, place.height() / size.y});
    QRectF fitted(0, 0, size.x * scale, size.y * scale);
    fitted.moveCenter(place.center());
    static_cast<QtImage const&>(picture).Paint(painter, fitted, direction);
}

}  // namespace moxui::backend
