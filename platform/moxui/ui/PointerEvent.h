#pragma once

#include "moxcore/geom/Point.h"

namespace moxui::ui {

class MouseEvent;

enum class PointerAction {
    Press = 1,
    Release = 2,
    Enter = 3,
    Move = 4,
    Leave = 5,
};

/// An event of the pointer over a node.
class PointerEvent {
public:
    /// `location` is in the node's own coordinates.
    PointerEvent(PointerAction action, moxcore::geom::PointT<float> const& location)
        : action(action), location(location) {}
    virtual ~PointerEvent() = default;

    /// The kind of event.
    [[nodiscard]] PointerAction GetAction() const { return action; }

    /// In the node's own coordinates.
    [[nodiscard]] moxcore::geom::PointT<float> GetLocation() const { return location; }

    /// This event as a mouse's, or null when another kind of pointer made it.
    [[nodiscard]] virtual MouseEvent const* GetMouseEvent() const { return nullptr; }

private:
    PointerAction action;
    moxcore::geom::PointT<float> location;
};

/// A pointer event that a mouse made. A press by keyboard or by an assistive tool comes as one of
/// button 1, too.
class MouseEvent : public PointerEvent {
public:
    /// `button`: 1 the primary, 2 the secondary, 3 the middle one, 0 none.
    MouseEvent(PointerAction action, moxcore::geom::PointT<float> const& location, int button)
        : PointerEvent(action, location), button(button) {}

    /// 1 the primary, 2 the secondary, 3 the middle one, 0 none.
    [[nodiscard]] int GetButton() const { return button; }
    [[nodiscard]] MouseEvent const* GetMouseEvent() const override { return this; }

private:
    int button;
};

}  // namespace moxui::ui
