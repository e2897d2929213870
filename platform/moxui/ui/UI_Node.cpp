#include "moxui/ui/UI_Node.h"

#include <QAbstractScrollArea>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/windows/ToolTip.h"
#include "moxui/ui/UI_Container.h"

namespace moxui::ui {

UI_Node::UI_Node(std::unique_ptr<backend::Peer> ownPeer) : peer(std::move(ownPeer)) {
    peer->SetNode(this);
    peer->themeGeneration = backend::ThemeGeneration();
}

UI_Node::~UI_Node() {
    peer->SetNode(nullptr);
}

void UI_Node::UI_SetNodeID(std::string const& newID) {
    id = newID;
    if (auto* const widget = peer->GetWidget()) widget->setObjectName(QString::fromStdString(id));
}

boost::intrusive_ptr<UI_Node> UI_Node::UI_GetParentNode() const {
    return parent;
}

boost::intrusive_ptr<UI_Node> UI_Node::UI_GetRootNode() const {
    auto const* node = this;
    while (node->parent)
        node = node->parent;
    return const_cast<UI_Node*>(node);
}

OS_Window UI_Node::UI_GetOSWindow() {
    return OS_Window(this);
}

boost::intrusive_ptr<UI_Node> UI_Node::UI_ChildGetFromID(std::string const& wanted) const {
    auto const* const container = dynamic_cast<UI_Container const*>(this);
    if (!container) return nullptr;
    for (auto child = container->ChildBegin(); child != container->ChildEnd(); ++child) {
        if ((*child)->id == wanted) return *child;
        if (auto found = (*child)->UI_ChildGetFromID(wanted)) return found;
    }
    return nullptr;
}

moxcore::geom::RectT<float> UI_Node::UI_GetLocalRectF(bool inParentCoordinates) const {
    auto const* const widget = peer->GetWidget();
    if (!widget) return {};
    return backend::FromQRectF(QRectF(inParentCoordinates ? widget->geometry() : widget->rect()));
}

moxcore::geom::RectT<float> UI_Node::UI_LocalToGlobalF(
    moxcore::geom::RectT<float> const& rect) const {
    auto const* const widget = peer->GetWidget();
    if (!widget) return rect;
    auto const corner = widget->mapToGlobal(peer->ToWidget(backend::ToQRectF(rect)).topLeft());
    return {static_cast<float>(corner.x()), static_cast<float>(corner.y()), rect.width,
            rect.height};
}

moxcore::geom::PointT<float> UI_Node::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    return {};
}

drawbot::SupplierInterface const* UI_Node::UI_GetDrawSupplier() const {
    return parent ? parent->UI_GetDrawSupplier() : nullptr;
}

void UI_Node::UI_Draw(drawbot::Drawbot*) const {}

void UI_Node::UI_Invalidate() {
    auto* const widget = peer->GetWidget();
    if (!widget) return;
    auto* const area = qobject_cast<QAbstractScrollArea*>(widget);
    (area ? area->viewport() : widget)->update();
}

bool UI_Node::UI_DoPointerEvent(UI_Node*, PointerEvent const&) {
    return false;
}

void UI_Node::UI_AddCustomMouseEventFunction(std::shared_ptr<MouseEventFunction> const& function,
                                             int order) {
    peer->AddMouseEventFunction(function, order);
}

void UI_Node::UI_SetToolTip(moxcore::string::UTF16String const& text, int delay) {
    if (auto* const widget = peer->GetWidget())
        backend::SetToolTip(*widget, backend::ToQString(text), delay);
}

moxcore::string::UTF16String UI_Node::UI_GetToolTip() const {
    auto const* const widget = peer->GetWidget();
    return widget ? backend::FromQString(backend::FromPlainToolTip(widget->toolTip()))
                  : moxcore::string::UTF16String();
}

void UI_Node::UI_SetAccessibleName(moxcore::string::UTF16String const& name) {
    if (auto* const widget = peer->GetWidget()) widget->setAccessibleName(backend::ToQString(name));
}

void UI_Node::UI_ThemeChanged() {}

}  // namespace moxui::ui
