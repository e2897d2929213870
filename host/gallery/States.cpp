#include "host/gallery/States.h"

#include <QApplication>
#include <QHoverEvent>
#include <QMouseEvent>

#include "moxui/backend/HostWidget.h"

namespace quillogallery {
namespace {

/// Moves the pointer over the middle of `widget`, and sends the event to what lies there.
QWidget& MoveOver(QWidget& widget) {
    auto const centre = widget.rect().center();
    auto* const inner = widget.childAt(centre);
    for (auto* const entered : {&widget, inner}) {
        if (!entered) continue;
        QPointF const here = entered->mapFrom(&widget, centre);
        auto const global = entered->mapToGlobal(here);
        QEnterEvent enter(here, here, global);
        QApplication::sendEvent(entered, &enter);
        QHoverEvent hover(QEvent::HoverEnter, here, global, QPointF(-1, -1));
        QApplication::sendEvent(entered, &hover);
        QMouseEvent move(QEvent::MouseMove, here, global, Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QApplication::sendEvent(entered, &move);
    }
    return inner ? *inner : widget;
}

}  // namespace

char const* NameOf(State state) {
    switch (state) {
        case State::Normal:
            return "Normal";
        case State::Hovered:
            return "Hovered";
        case State::Pressed:
            return "Pressed";
        case State::Focused:
            return "Focused";
        case State::Disabled:
            return "Disabled";
        case State::Checked:
            return "Checked";
    }
    return "";
}

bool Has(Specimen const& specimen, State state) {
    switch (state) {
        case State::Normal:
        case State::Disabled:
            return true;
        case State::Hovered:
        case State::Focused:
            return specimen.worked;
        case State::Pressed:
            return specimen.worked && specimen.pressed;
        case State::Checked:
            return bool(specimen.check);
    }
    return false;
}

void BringInto(State state, Specimen const& specimen, moxui::controls::UI_ControlView& view) {
    auto& widget = *moxui::backend::GetWidget(view);
    switch (state) {
        case State::Normal:
            break;
        case State::Hovered:
            MoveOver(widget);
            break;
        case State::Pressed: {
            auto& pressed = MoveOver(widget);
            QPointF const here = pressed.rect().center();
            QMouseEvent press(QEvent::MouseButtonPress, here, pressed.mapToGlobal(here),
                              Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&pressed, &press);
            break;
        }
        case State::Focused:
            view.UI_SetFocus();
            break;
        case State::Disabled:
            view.UI_SetDisabled(true);
            break;
        case State::Checked:
            specimen.check(view);
            break;
    }
}

}  // namespace quillogallery
