#include "moxui/backend/detail/MenuModel.h"

#include <QHelpEvent>
#include <QStyle>
#include <QToolTip>
#include <algorithm>

#include "moxui/backend/detail/Conversions.h"
#include "moxui/backend/detail/ItemText.h"
#include "moxui/backend/detail/ToolTip.h"
#include "moxui/skins/ThemeProvider.h"
#include "moxui/skins/ThemeSize.h"

namespace moxui::backend {
namespace {

namespace Key = skins::ThemeColor;
namespace Size = skins::ThemeSize;

constexpr int kIconRoom = Size::kMenuIcon + Size::kControlPadding;

QFont Bold(QFont font) {
    font.setBold(true);
    return font;
}

}  // namespace

void MenuModel::Append(Kind kind, QString const& text) {
    auto const row = static_cast<int>(entries.size());
    beginInsertRows({}, row, row);
    entries.push_back({kind, text});
    if (kind == Kind::CustomIconItem) hasPictures = true;
    endInsertRows();
}

void MenuModel::Clear() {
    beginResetModel();
    entries.clear();
    hasPictures = false;
    endResetModel();
}

void MenuModel::SetEnabled(int row, bool enabled) {
    if (!At(row)) return;
    entries[static_cast<std::size_t>(row)].enabled = enabled;
    emit dataChanged(index(row), index(row));
}

void MenuModel::EnableAll() {
    if (entries.empty()) return;
    for (auto& entry : entries)
        entry.enabled = true;
    emit dataChanged(index(0), index(rowCount() - 1));
}

MenuModel::Entry const* MenuModel::At(int row) const {
    return row >= 0 && row < rowCount() ? &entries[static_cast<std::size_t>(row)] : nullptr;
}

bool MenuModel::IsHeading(int row) const {
    auto const* const entry = At(row);
    return entry && entry->kind == Kind::Heading;
}

bool MenuModel::IsItem(int row) const {
    return At(row) && !IsHeading(row);
}

bool MenuModel::CanBeChosen(int row) const {
    return IsItem(row) && At(row)->enabled;
}

QString MenuModel::Text(int row) const {
    auto const* const entry = At(row);
    return entry ? entry->text : QString();
}

boost::intrusive_ptr<drawbot::ImageInterface> MenuModel::Picture(int row) const {
    auto const* const entry = At(row);
    bool const has = entry && entry->kind == Kind::CustomIconItem && picture;
    return has ? picture(row) : nullptr;
}

int MenuModel::WidestText(QFont const& font) const {
    QFontMetrics const metrics(font);
    QFontMetrics const bold(Bold(font));
    int widest = 0;
    for (auto const& entry : entries)
        widest = std::max(widest, (entry.kind == Kind::Heading ? bold : metrics)
                                      .horizontalAdvance(OnOneLine(entry.text)));
    return widest;
}

int MenuModel::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries.size());
}

Qt::ItemFlags MenuModel::flags(QModelIndex const& index) const {
    return CanBeChosen(index.row()) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

QVariant MenuModel::data(QModelIndex const& index, int role) const {
    bool const isText = role == Qt::DisplayRole || role == Qt::AccessibleTextRole;
    return isText ? OnOneLine(Text(index.row())) : QVariant();
}

MenuDelegate::MenuDelegate(MenuModel const& entries, QObject* parent)
    : QStyledItemDelegate(parent), entries(entries) {}

int MenuDelegate::WidthOfWidest(QFont const& font) const {
    // The chosen one is bold.
    return entries.WidestText(Bold(font)) + 2 * Size::kControlPadding +
           (entries.HasPictures() ? kIconRoom : 0);
}

QSize MenuDelegate::sizeHint(QStyleOptionViewItem const&, QModelIndex const&) const {
    return {0, Size::kMenuRowHeight};
}

QRect MenuDelegate::TextRect(QStyleOptionViewItem const& option, int row) const {
    auto rect = option.rect.adjusted(Size::kControlPadding, 0, -Size::kControlPadding, 0);
    if (entries.HasPictures() && !entries.IsHeading(row)) rect.setLeft(rect.left() + kIconRoom);
    return QStyle::visualRect(option.direction, option.rect, rect);
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
        QRect const place(option.rect.left() + Size::kControlPadding,
                          option.rect.center().y() - Size::kMenuIcon / 2 + 1, Size::kMenuIcon,
                          Size::kMenuIcon);
        if (!canBeChosen) painter->setOpacity(0.5);
        PaintPicture(*painter, QRectF(QStyle::visualRect(option.direction, option.rect, place)),
                     *picture);
        painter->setOpacity(1);
    }
    painter->setFont(row == chosen || entries.IsHeading(row) ? Bold(option.font) : option.font);
    PaintItemText(*painter, QRectF(TextRect(option, row)), entries.Text(row),
                  color(!canBeChosen    ? Key::kDisabledText
                        : isHighlighted ? Key::kSelectedText
                                        : Key::kText));
    painter->restore();
}

bool MenuDelegate::helpEvent(QHelpEvent* event, QAbstractItemView*,
                             QStyleOptionViewItem const& option, QModelIndex const& index) {
    if (event->type() != QEvent::ToolTip) return false;
    auto const text = OnOneLine(entries.Text(index.row()));
    int const width = QFontMetrics(Bold(option.font)).horizontalAdvance(text);
    if (width > TextRect(option, index.row()).width())
        QToolTip::showText(event->globalPos(), AsPlainToolTip(text));
    else
        QToolTip::hideText();
    return true;
}

void PaintPicture(QPainter& painter, QRectF const& place, drawbot::ImageInterface const& picture) {
    auto const size = picture.GetSize();
    if (size.x <= 0 || size.y <= 0) return;
    qreal const scale = std::min({1.0, place.width() / size.x, place.height() / size.y});
    QRectF fitted(0, 0, size.x * scale, size.y * scale);
    fitted.moveCenter(place.center());
    static_cast<QtImage const&>(picture).Paint(painter, fitted);
}

}  // namespace moxui::backend
