#include "moxui/backend/detail/widgets/ViewWidget.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <utility>

#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/focus/FocusOrder.h"
#include "moxui/backend/detail/widgets/Accessibility.h"
#include "moxui/backend/detail/widgets/MouseEvents.h"
#include "moxui/skins/ThemeProvider.h"

namespace moxui::backend {

ViewWidget::ViewWidget() {
    TellAssistiveToolsAboutViews();
}

void ViewWidget::SetSelected(bool selected) {
    if (std::exchange(isSelected, selected) == selected) return;
    QAccessible::State changed;
    changed.selected = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void ViewWidget::Press() {
    if (node && isEnabled()) node->GetPeer().DeliverKeyPress();
}

bool ViewWidget::event(QEvent* event) {
    if (!node) return QWidget::event(event);
    if (auto const mouse = ToMouseEvent(*event, node->GetPeer())) {
        bool const handled = node->GetPeer().Deliver(*mouse);
        // Entering and leaving are Qt's business, too; what is not handled is the parent's to see.
        if (event->type() != QEvent::Enter && event->type() != QEvent::Leave) {
            event->setAccepted(handled);
            return handled;
        }
    } else if (focusPolicy() != Qt::NoFocus && IsPressingKey(*event)) {
        Press();
        return true;
    }
    return QWidget::event(event);
}

void ViewWidget::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::LayoutDirectionChange || !node) return;
    node->GetPeer().PlaceChildren();
    update();
}

void ViewWidget::paintEvent(QPaintEvent*) {
    if (!node) return;
    {
        QtDrawbot drawbot(*this, node->GetPeer().Origin());
        CallFromQt([&] { node->UI_Draw(&drawbot); });
    }
    if (!hasFocus()) return;
    QPainter painter(this);
    PaintFocusRing(painter, QRectF(rect()));
}

RootWidget::RootWidget() = default;

void RootWidget::FocusFirst(Qt::FocusReason reason) {
    auto const stops = TabStopsBelow(*this);
    if (!stops.empty()) stops.front()->setFocus(reason);
}

bool RootWidget::focusNextPrevChild(bool next) {
    auto const stops = TabStopsBelow(*this);
    if (stops.empty()) return false;
    auto const count = stops.size();
    std::size_t target = next ? 0 : count - 1;
    for (std::size_t i = 0; i < count; ++i)
        if (stops[i]->hasFocus()) target = (i + (next ? 1 : count - 1)) % count;
    stops[target]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

}  // namespace moxui::backend
