#include "moxui/backend/detail/menus/DropDown.h"

#include <QKeyEvent>
#include <QListView>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScreen>
#include <QScrollBar>
#include <algorithm>

#include "moxui/backend/detail/drawing/Chevron.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/menus/ListStyle.h"
#include "moxui/backend/detail/widgets/Accessibility.h"
#include "moxui/backend/detail/windows/Wayland.h"
#include "moxui/controls/UI_ControlView.h"

namespace moxui::backend {
namespace {

namespace Key = skins::ThemeColor;
using Size = skins::ThemeSize;

/// A menu with more entries than this scrolls.
constexpr int kEntriesSeen = 16;

/// The open menu's list: the keys pass over what cannot be chosen.
class MenuList : public QListView {
protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override {
        auto const& entries = static_cast<MenuModel const&>(*model());
        auto const target = QListView::moveCursor(action, modifiers);
        auto const towards = [&](int step) {
            int row = target.row();
            while (row >= 0 && row < entries.rowCount() && !entries.CanBeChosen(row))
                row += step;
            return entries.index(row);
        };
        bool const wantsUpward = action == MoveUp || action == MoveEnd || action == MovePageDown;
        auto const found = towards(wantsUpward ? -1 : 1);
        return found.isValid() ? found : towards(wantsUpward ? 1 : -1);
    }
};

}  // namespace

DropDown::DropDown() : entries(new MenuModel(this)), delegate(new MenuDelegate(*entries, this)) {
    TellAssistiveToolsAboutViews();
    setStyle(&ListStyle::Get());
    setFont(ThemeFont(""));
    setMaxVisibleItems(kEntriesSeen);
}

DropDown::~DropDown() {
    if (list) list->window()->removeEventFilter(this);
    notices.HasClosed();
}

QAbstractItemView& DropDown::List() {
    if (list) return *list;
    auto* const made = new MenuList;
    list = made;
    setModel(entries);
    setCurrentIndex(ShownEntry());
    setView(made);
    made->setItemDelegate(delegate);
    made->setUniformItemSizes(true);
    made->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    made->verticalScrollBar()->setStyle(&ListStyle::Get());
    made->window()->setStyle(&ListStyle::Get());
    made->window()->installEventFilter(this);
    made->window()->setFont(font());
    return *made;
}

void DropDown::ShowEntry(int row) {
    delegate->chosen = row;
    if (list) setCurrentIndex(row);
    shown = entries->Text(row);
    Refit();
}

void DropDown::SetChrome(controls::ButtonChromeType type) {
    chrome = type;
    update();
}

void DropDown::showPopup() {
    if (!node || notices.IsOpen()) return;
    boost::intrusive_ptr<ui::UI_Node> const alive(node);
    notices.WillOpen();
    if (node && isVisible() && isEnabled()) {
        ApplyTheme(*List().window());
        int const frame = 2 * WholeSize(Size::LineWidth);
        int const bar = count() > kEntriesSeen ? WholeSize(Size::ScrollBar) : 0;
        List().setMinimumWidth(std::min(delegate->WidestEntry(font()) + bar + frame,
                                        screen()->availableSize().width() / 2));
        HangFromPopup(*List().window(), *this);
        QComboBox::showPopup();
    }
    if (!IsOpen()) notices.HasClosed();
    update();
}

void DropDown::hidePopup() {
    {
        // Qt holds the model's signals back while it hides the menu, and a handler of its
        // closing may change the entries.
        QScopedValueRollback const hiding(isHiding, true);
        QComboBox::hidePopup();
    }
    if (!IsOpen()) notices.HasClosed();
    update();
}

bool DropDown::eventFilter(QObject* watched, QEvent* event) {
    // A click elsewhere closes the menu without hidePopup.
    bool const isMenu = list && watched == list->window();
    if (isMenu && event->type() == QEvent::Hide && !isHiding) {
        notices.HasClosed();
        update();
    }
    return QComboBox::eventFilter(watched, event);
}

bool DropDown::event(QEvent* event) {
    return shown.ShowWholeAsToolTip(*event, *this) || QComboBox::event(event);
}

void DropDown::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Space:
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_F4:
            showPopup();
            return;
        default:
            // The choice changes in the open menu only.
            event->ignore();
    }
}

void DropDown::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void DropDown::resizeEvent(QResizeEvent* event) {
    QComboBox::resizeEvent(event);
    Refit();
}

void DropDown::changeEvent(QEvent* event) {
    // Qt would make a list of its own, to tell it.
    bool const isForTheList =
        event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange;
    if (list || !isForTheList)
        QComboBox::changeEvent(event);
    else
        QWidget::changeEvent(event);  // NOLINT(bugprone-parent-virtual-call): past QComboBox
    if (event->type() == QEvent::FontChange) Refit();
}

void DropDown::Refit() {
    shown.Fit(font(), TextRoom().size());
    update();
}

QRect DropDown::Visual(QRect const& place) const {
    return QStyle::visualRect(layoutDirection(), rect(), place);
}

QRect DropDown::TextRoom() const {
    int const padding = WholeSize(Size::MenuPadding);
    int const gap = WholeSize(Size::ControlGap);
    bool const hasPicture = entries->Picture(ShownEntry()) != nullptr;
    return Visual(rect().adjusted(padding + (hasPicture ? WholeSize(Size::MenuPicture) + gap : 0),
                                  0, -padding - WholeSize(Size::Chevron) - gap, 0));
}

int DropDown::WidthFor(int textWidth) const {
    int const gap = WholeSize(Size::ControlGap);
    return textWidth + 2 * WholeSize(Size::MenuPadding) + gap + WholeSize(Size::Chevron) +
           (entries->HasPictures() ? WholeSize(Size::MenuPicture) + gap : 0);
}

void DropDown::paintEvent(QPaintEvent*) {
    if (!node) return;
    auto const& colors = static_cast<controls::UI_ControlView const&>(*node);
    bool const enabled = isEnabled();
    auto const color = [&](int key) {
        return ToQColor(colors.GetColor(enabled ? key : Key::kDisabledText));
    };
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    bool const isOpen = enabled && notices.IsOpen();
    bool const isActive = isOpen || (enabled && underMouse());
    bool const isFramed = chrome == controls::ButtonChromeType::Push;
    auto const& theme = skins::ThemeProvider::Get();
    auto const radius = theme.GetSize(Size::CornerRadius);
    auto const inset = isFramed ? theme.GetSize(Size::LineWidth) / 2 : 0;
    auto const frame = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    if (isFramed || isActive) {
        auto const border = enabled ? ToQColor(colors.GetColor(Key::kControlBorder))
                                    : ToQColor(theme.GetGray(skins::HalcynGrayColor::Level4));
        painter.setPen(isFramed ? QPen(border) : QPen(Qt::NoPen));
        painter.setBrush(ToQColor(colors.GetColor(!enabled   ? Key::kControlDisabled
                                                  : isOpen   ? Key::kControlPressed
                                                  : isActive ? Key::kButtonHovered
                                                             : Key::kButtonGround)));
        painter.drawRoundedRect(frame, radius, radius);
    }
    if (hasFocus()) PaintFocusRing(painter, QRectF(rect()));

    int const padding = WholeSize(Size::MenuPadding);
    if (auto const picture = entries->Picture(ShownEntry())) {
        if (!enabled) painter.setOpacity(kOpacityOfDisabledPicture);
        auto const place = Visual(QRect(padding, 0, WholeSize(Size::MenuPicture), height()));
        PaintPicture(painter, QRectF(place), *picture, layoutDirection());
        painter.setOpacity(1);
    }
    painter.setFont(font());
    painter.setPen(color(Key::kButtonText));
    shown.Paint(painter, QRectF(TextRoom()), Qt::AlignLeft, layoutDirection());
    int const chevron = WholeSize(Size::Chevron);
    auto const arrow = Visual(QRect(width() - padding - chevron, 0, chevron, height()));
    PaintChevron(painter, QRectF(arrow).center(), ChevronDirection::Down, color(Key::kIcon));
}

}  // namespace moxui::backend
