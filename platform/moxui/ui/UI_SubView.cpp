#include "moxui/ui/UI_SubView.h"

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"

namespace moxui::ui {

UI_SubView::UI_SubView() : UI_SubView(backend::MakePeer<backend::ViewWidget>()) {}

UI_SubView::UI_SubView(std::unique_ptr<backend::Peer> peer) : UI_Container(std::move(peer)) {}

UI_SubView::~UI_SubView() = default;

void UI_SubView::UI_Show(bool show) {
    visible = show;
    // A widget without a parent would become a window of its own.
    auto* const widget = GetPeer().GetWidget();
    if (widget && widget->parentWidget()) widget->setVisible(show);
}

void UI_SubView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& newRect) {
    rect = newRect;
    UI_DrawnRectChanged();
    UI_SizeChanged(UI_GetLocalRectF(false));
}

moxcore::geom::RectT<float> UI_SubView::UI_GetLocalRectF(bool inParentCoordinates) const {
    return inParentCoordinates ? rect : moxcore::geom::RectT<float>{0, 0, rect.width, rect.height};
}

moxcore::geom::RectT<float> UI_SubView::UI_GetDrawnRect() const {
    return rect;
}

void UI_SubView::UI_DrawnRectChanged() {
    GetPeer().Place(backend::ToWholeUnits(UI_GetDrawnRect()),
                    backend::ToWholeUnits(rect).topLeft());
}

void UI_SubView::UI_SizeChanged(moxcore::geom::RectT<float> const&) {}

void UI_SubView::UI_SetFocusable(bool focusable, AccessibleRole role) {
    auto* const widget = GetPeer().GetWidget();
    if (!widget) return;
    widget->setFocusPolicy(focusable ? Qt::StrongFocus : Qt::NoFocus);
    if (auto* const view = dynamic_cast<backend::ViewWidget*>(widget)) view->role = role;
}

void UI_SubView::UI_SetAccessibleSelected(bool selected) {
    if (auto* const view = dynamic_cast<backend::ViewWidget*>(GetPeer().GetWidget()))
        view->SetSelected(selected);
}

bool UI_SubView::UI_HasFocus() const {
    auto const* const widget = GetPeer().GetWidget();
    return widget && widget->hasFocus();
}

void UI_SubView::UI_SetFocus() {
    if (auto* const widget = GetPeer().GetWidget()) widget->setFocus(Qt::OtherFocusReason);
}

}  // namespace moxui::ui
