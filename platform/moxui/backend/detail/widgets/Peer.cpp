#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"

#include <QCoreApplication>
#include <QStyle>
#include <algorithm>

#include "moxui/backend/detail/widgets/MouseEvents.h"
#include "moxui/ui/UI_Container.h"

namespace moxui::backend {

Peer::~Peer() {
    context.reset();  // hiding the widget must tell the node nothing more
    if (!widget) return;
    if (link) link->node = nullptr;
    if (ownership == Ownership::Host || (goesWithParent && widget->parentWidget())) return;
    widget->hide();
    widget->setParent(nullptr);
    if (QCoreApplication::instance())
        widget->deleteLater();
    else
        delete widget.data();
}

void Peer::SetNode(ui::UI_Node* newNode) {
    node = newNode;
    if (link && widget) link->node = newNode;  // it goes with the widget
}

void Peer::SetParent(Peer* parent) {
    goesWithParent = false;
    if (!widget) return;
    widget->setParent(parent ? parent->GetWidget() : nullptr);
    if (!parent) return;
    PlaceWidget();
    if (widget->isRightToLeft()) PlaceChildren();  // which were placed as those of a window
}

void Peer::Place(QRect const& drawn, QPoint corner) {
    if (!widget) return;
    int const widthBefore = widget->width();
    place = drawn;
    origin = corner - drawn.topLeft();
    PlaceWidget();
    if (widget->isRightToLeft() && widget->width() != widthBefore) PlaceChildren();
}

void Peer::PlaceWidget() const {
    if (!widget || !place) return;
    auto const* const parent = widget->parentWidget();
    // What lies in a window itself fills it, and comes to its size before the window does.
    bool const isMirrored = parent && parent->isRightToLeft() && !parent->isWindow();
    widget->setGeometry(isMirrored ? QStyle::visualRect(Qt::RightToLeft, parent->rect(), *place)
                                   : *place);
}

void Peer::PlaceChildren() const {
    auto const* const container = dynamic_cast<ui::UI_Container const*>(node);
    if (!container) return;
    for (auto child = container->ChildBegin(); child != container->ChildEnd(); ++child) {
        auto const& peer = (*child)->GetPeer();
        // Qt scrolls what is in a scroll area, and mirrors it.
        if (peer.widget && peer.widget->parentWidget() == widget) peer.PlaceWidget();
    }
}

QPointF Peer::ToNode(QPointF const& inWidget) const {
    if (!widget || !widget->isRightToLeft()) return inWidget - origin;
    return {widget->width() - origin.x() - inWidget.x(), inWidget.y() - origin.y()};
}

QRectF Peer::ToWidget(QRectF const& inNode) const {
    auto rect = inNode.translated(origin);
    if (widget && widget->isRightToLeft()) rect.moveLeft(widget->width() - rect.right());
    return rect;
}

bool Peer::Deliver(ui::MouseEvent const& event) {
    using ui::PointerAction;
    if (!node) return false;
    if (widget && !widget->isEnabled() &&
        (event.GetAction() == PointerAction::Press || event.GetAction() == PointerAction::Release))
        return false;
    // A handler may let go of the node, and with it of this peer and its functions.
    boost::intrusive_ptr<ui::UI_Node> const alive(node);
    for (std::size_t i = 0; i < mouseFunctions.size(); ++i) {
        auto const function = mouseFunctions[i].second;
        bool handled = false;
        bool taken = false;
        // A handler that throws has taken the event: no other may act on it as well.
        if (!CallFromQt([&] { taken = (*function)(alive.get(), event, handled); }) || taken ||
            handled)
            return true;
    }
    bool taken = true;
    CallFromQt([&] { taken = alive->UI_DoPointerEvent(alive.get(), event); });
    return taken;
}

bool Peer::DeliverKeyPress() {
    if (!node || !widget) return false;
    boost::intrusive_ptr<ui::UI_Node> const alive(node);
    auto const centre = ToNode(QPointF(widget->rect().center()));
    moxcore::geom::PointT<float> const location{static_cast<float>(centre.x()),
                                                static_cast<float>(centre.y())};
    bool const taken = Deliver(ui::MouseEvent(ui::PointerAction::Press, location, 1));
    Deliver(ui::MouseEvent(ui::PointerAction::Release, location, 1));
    return taken;
}

void Peer::AddMouseEventFunction(std::shared_ptr<ui::UI_Node::MouseEventFunction> const& function,
                                 int order) {
    if (!function || !*function) return;
    auto const place =
        std::upper_bound(mouseFunctions.begin(), mouseFunctions.end(), order,
                         [](int value, auto const& entry) { return value < entry.first; });
    bool const first = mouseFunctions.empty();
    mouseFunctions.emplace(place, order, function);
    if (first && widget) WatchMouseEvents(*widget, *this);
}

}  // namespace moxui::backend
