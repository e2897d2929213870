#include "moxui/backend/detail/windows/PopupWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>
#include <utility>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/windows/LastInput.h"
#include "moxui/backend/detail/windows/Placement.h"
#include "moxui/backend/detail/windows/Screens.h"
#include "moxui/backend/detail/windows/Wayland.h"
#include "moxui/skins/ThemeProvider.h"

namespace moxui::backend {
PopupWindow::PopupWindow(QWidget* anchor) {
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_OpaquePaintEvent);
    WatchInput();
    HangFrom(anchor);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
            &PopupWindow::ApplicationStateChanged);
}

PopupWindow::~PopupWindow() = default;

void PopupWindow::HangFrom(QWidget* newAnchor) {
    if (newAnchor == anchor) return;
    disconnect(anchorGone);
    bool const goesAlong = anchor && newAnchor;
    auto const* const windowBefore = anchor ? anchor->window() : nullptr;
    anchor = newAnchor;
    if (anchor) {
        anchorGone = connect(anchor, &QObject::destroyed, this, [this] {
            anchor = nullptr;
            // The anchor may have had the focus; its pointer is not cleared yet.
            focus.ForgetWidget();
            Dismiss();
        });
        focus.ForgetOutside(*anchor->window());
    }
    if (goesAlong)
        FollowAnchor();
    else
        anchorCorner = AnchorCorner();
    if (isVisible() && windowBefore != (anchor ? anchor->window() : nullptr)) ShowAgain();
}

void PopupWindow::SetContentRect(moxcore::geom::RectT<float> const& rect) {
    asked = rect;
    anchorCorner = AnchorCorner();
    Place();
    if (started && !isVisible()) Show();
}

void PopupWindow::Start() {
    if (!started) {
        started = true;
        focus.RememberFor(*this);
        memory.Forget();
        qApp->installEventFilter(this);
        FollowAnchor();
        if (!asked.IsEmpty()) Show();
    }
    // What comes into the popup gets its place only after this.
    QMetaObject::invokeMethod(
        this, [this] { TakeFocus(); }, Qt::QueuedConnection);
}

void PopupWindow::Stop() {
    if (!started) return;
    bool const focused = FocusReturn::IsWith(*this);
    TakeDown();
    if (focused) focus.GiveBack(anchor);
}

bool PopupWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) away = false;
    return RootWidget::event(event);
}

bool PopupWindow::eventFilter(QObject* receiver, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return HandlePress(*receiver, *static_cast<QMouseEvent*>(event));
        case QEvent::ShortcutOverride:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            return keys.Filter(*receiver, *event);
        case QEvent::MouseButtonRelease:
            // Queued: a handler may open a window.
            if (returning.IsUnderWay())
                QMetaObject::invokeMethod(
                    this, [this] { returning.End(); }, Qt::QueuedConnection);
            return false;
        case QEvent::Show:
            NoteWindow(*receiver);
            return false;
        case QEvent::Move:
        case QEvent::Resize:
            if (anchor && receiver->isWidgetType() &&
                (receiver == anchor || static_cast<QWidget*>(receiver)->isAncestorOf(anchor)))
                FollowAnchor();
            return false;
        case QEvent::Hide:
            // One that the window system hides, an iconified one, comes back.
            if (receiver == anchor && !event->spontaneous()) Dismiss();
            return false;
        default:
            return false;
    }
}

void PopupWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel))
        Dismiss();
    else
        RootWidget::keyPressEvent(event);
}

void PopupWindow::closeEvent(QCloseEvent* event) {
    if (started) {
        event->ignore();
        Dismiss();
    }
}

void PopupWindow::paintEvent(QPaintEvent*) {
    // The frame is its content's to draw.
    QPainter(this).fillRect(
        rect(), ToQColor(skins::ThemeProvider::Get().GetColor(skins::ThemeColor::kGround)));
}

void PopupWindow::Dismiss() {
    if (!started) return;
    Stop();
    if (node && onDismissed) onDismissed();
}

void PopupWindow::TakeDown() {
    started = false;
    away = false;
    returning = ReturnPress();
    qApp->removeEventFilter(this);
    hide();
}

void PopupWindow::Place() {
    auto const anchorRect = FromQRectF(QRectF(AnchorOnScreen()));
    auto wanted = asked;
    // Places are asked for as seen from the left; beside what it hangs from, the popup is mirrored.
    if (anchor && isRightToLeft())
        wanted.x = 2 * anchorRect.x + anchorRect.width - asked.x - asked.width;
    if (IsOnWayland()) return PlaceBesideAnchor(ToWholeUnits(wanted));
    auto const screens = AvailableScreens();
    if (screens.empty()) return;
    setGeometry(ToWholeUnits(
        PlacePopup(wanted, anchorRect, ScreenOf(anchor ? anchorRect : wanted, screens))));
}

void PopupWindow::PlaceBesideAnchor(QRect const& place) {
    bool const stays = place.topLeft() == geometry().topLeft();
    setGeometry(place);
    if (stays || !isVisible() || std::exchange(willShowAgain, true)) return;
    // Windows are put beside others only when they are shown. Once for all that moves now.
    QMetaObject::invokeMethod(
        this,
        [this] {
            willShowAgain = false;
            if (isVisible()) ShowAgain();
        },
        Qt::QueuedConnection);
}

void PopupWindow::Show() {
    BecomeTransient();
    // Without this Qt gives the focus to some control, also when the mouse opened the popup.
    setFocus(Qt::PopupFocusReason);
    show();
    Activate(*this);
}

void PopupWindow::BecomeTransient() {
    MakeTransient(*this, anchor ? anchor->window() : nullptr);
    if (anchor) HangFromOwner(*this);
}

void PopupWindow::ShowAgain() {
    bool const wasActive = isActiveWindow();
    // Window systems ask whose transient a window is only when it is shown.
    hide();
    BecomeTransient();
    setAttribute(Qt::WA_ShowWithoutActivating, !wasActive);
    show();
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    if (!wasActive) return;
    Activate(*this);
    // Qt has taken the focus from the hidden control, and sees no change when the window regains
    // the focus before the window system has reported its loss.
    QApplication::setActiveWindow(this);
}

void PopupWindow::TakeFocus() {
    if (!started || !isActiveWindow() || !LastInputWasKey()) return;
    auto const* const focused = QApplication::focusWidget();
    if (focused && focused != this) return;
    if (!memory.Restore(Qt::TabFocusReason)) FocusFirst(Qt::TabFocusReason);
}

QPoint PopupWindow::AnchorCorner() const {
    return AnchorOnScreen().bottomRight();
}

QRect PopupWindow::AnchorOnScreen() const {
    return anchor ? QRect(anchor->mapToGlobal(QPoint()), anchor->size()) : QRect();
}

void PopupWindow::FollowAnchor() {
    if (!anchor || asked.IsEmpty()) return;
    auto const moved = AnchorCorner() - anchorCorner;
    if (moved.isNull()) return;
    anchorCorner += moved;
    asked.x += static_cast<float>(moved.x());
    asked.y += static_cast<float>(moved.y());
    Place();
}

bool PopupWindow::HandlePress(QObject& receiver, QMouseEvent const& press) {
    if (!isVisible()) return false;
    // Qt hands every press to an open menu, wherever it falls; one that closes the menu it hands,
    // once more, to what lies there, with the same timestamp.
    if (menuShowing || QApplication::activePopupWidget()) {
        menuPressAt = press.timestamp();
        return false;
    }
    if (menuPressAt != 0 && press.timestamp() == menuPressAt) return false;

    auto* const widget = qobject_cast<QWidget*>(&receiver);
    auto* const window =
        widget ? widget->window()->windowHandle() : qobject_cast<QWindow*>(&receiver);
    // Without a window manager no press gives a window the focus.
    if (away && window && window == windowHandle()) Activate(*this);
    if (!window || BelongsTo(*window, *this) || IsBlocked()) return false;

    bool const onAnchor = anchor && window == anchor->window()->windowHandle() &&
                          AnchorOnScreen().contains(press.globalPosition().toPoint());
    if (away && onAnchor) {
        Activate(*this);
        return true;
    }
    if (away) {
        if (returning.Begin(*window, press)) JudgeReturnLater();
        if (widget) returning.IsOfferedTo(*widget);
        return false;
    }
    QPointer<QObject> const alive = &receiver;
    Dismiss();
    // The anchor would open the popup again.
    return onAnchor || !alive;
}

void PopupWindow::JudgeReturnLater() {
    QMetaObject::invokeMethod(
        this, [this] { JudgeReturn(); }, Qt::QueuedConnection);
}

void PopupWindow::JudgeReturn() {
    if (!returning.HasBegun()) return;
    if (!returning.DoesSomething()) return Activate(*this);
    auto* const pressed = returning.GivesFocusAway() ? nullptr : returning.GetWindow();
    TakeDown();
    // The focus stays where the press has put it. The popup may have got it first.
    if (pressed && pressed->isVisible()) pressed->requestActivate();
    if (node && onDismissed) onDismissed();
}

void PopupWindow::NoteWindow(QObject const& shown) {
    auto const* const widget = qobject_cast<QWidget const*>(&shown);
    if (!returning.IsUnderWay() || !widget || !widget->isWindow() ||
        widget->windowType() == Qt::ToolTip)
        return;
    auto const* const window = widget->windowHandle();
    if (window && BelongsTo(*window, *this)) return;
    returning.HasOpened(*widget);
    JudgeReturnLater();
}

bool PopupWindow::IsBlocked() const {
    auto const* const modal = QApplication::activeModalWidget();
    return modal && !(windowHandle() && BelongsTo(*windowHandle(), *modal));
}

void PopupWindow::ApplicationStateChanged(Qt::ApplicationState state) {
    if (!isVisible()) return;
    if (state != Qt::ApplicationActive) {
        away = true;
        CloseMenuOf(*this);
    } else if (away && !IsBlocked() && !returning.IsUnderWay()) {
        ActivateOnReturn(*this);
    }
}

}  // namespace moxui::backend
