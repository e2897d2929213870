#pragma once

#include <QEvent>
#include <QWidget>
#include <optional>

#include "moxui/ui/PointerEvent.h"

namespace moxui::backend {

class Peer;

/// Converts `event` of the widget of `peer` into the coordinates of its node; none when it is no
/// pointer event.
[[nodiscard]] std::optional<ui::MouseEvent> ToMouseEvent(QEvent const& event, Peer const& peer);

/// Whether `event` is Enter or Space going down, which press what has the focus.
[[nodiscard]] bool IsPressingKey(QEvent const& event);

/// Passes the pointer events of `widget`, a ready-made control, to `peer` first, and makes the
/// widget reachable with Tab. Enter and Space press it, and are the control's where nobody takes
/// the press. As long as both live.
void WatchMouseEvents(QWidget& widget, Peer& peer);

}  // namespace moxui::backend
