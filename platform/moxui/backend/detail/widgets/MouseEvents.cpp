#include "moxui/backend/detail/widgets/MouseEvents.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"

namespace moxui::backend {
namespace {

int ButtonNumber(Qt::MouseButton button) {
    switch (button) {
        case Qt::LeftButton:
            return 1;
        case Qt::RightButton:
            return 2;
        case Qt::MiddleButton:
            return 3;
        default:
            return 0;
    }
}

moxcore::geom::PointT<float> Location(QPointF const& point) {
    return {static_cast<float>(point.x()), static_cast<float>(point.y())};
}

/// Sees a control's events first. A child of the control, so that it goes with it.
class Watcher : public QObject {
public:
    Watcher(QWidget& widget, Peer& peer) : QObject(&widget), node(peer.GetNode()) {
        widget.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto const alive = node.Lock();
        if (!alive) return QObject::eventFilter(watched, event);
        auto& peer = alive->GetPeer();
        if (auto const mouse = ToMouseEvent(*event, peer)) return peer.Deliver(*mouse);
        if (IsPressingKey(*event)) return peer.DeliverKeyPress();
        return QObject::eventFilter(watched, event);
    }

private:
    moxcore::utility::RefCountedWeakPtr<ui::UI_Node> node;
};

}  // namespace

std::optional<ui::MouseEvent> ToMouseEvent(QEvent const& event, Peer const& peer) {
    using ui::PointerAction;
    auto const mouse = [&](PointerAction action) {
        auto const& qt = static_cast<QMouseEvent const&>(event);
        return ui::MouseEvent(action, Location(peer.ToNode(qt.position())),
                              ButtonNumber(qt.button()));
    };
    switch (event.type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return mouse(PointerAction::Press);
        case QEvent::MouseButtonRelease:
            return mouse(PointerAction::Release);
        case QEvent::MouseMove:
            return mouse(PointerAction::Move);
        case QEvent::Enter:
            return ui::MouseEvent(
                PointerAction::Enter,
                Location(peer.ToNode(static_cast<QEnterEvent const&>(event).position())), 0);
        case QEvent::Leave:
            return ui::MouseEvent(PointerAction::Leave, {}, 0);
        default:
            return std::nullopt;
    }
}

bool IsPressingKey(QEvent const& event) {
    if (event.type() != QEvent::KeyPress) return false;
    auto const& key = static_cast<QKeyEvent const&>(event);
    if (key.isAutoRepeat()) return false;
    return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter || key.key() == Qt::Key_Space;
}

void WatchMouseEvents(QWidget& widget, Peer& peer) {
    if (widget.focusPolicy() == Qt::NoFocus) widget.setFocusPolicy(Qt::TabFocus);
    // A plain view's widget delivers its events by itself.
    if (!dynamic_cast<ViewWidget*>(&widget)) new Watcher(widget, peer);
}

}  // namespace moxui::backend
