#pragma once

#include "moxui/controls/UI_ControlView.h"
#include "moxui/drawbot/Drawbot.h"

namespace quillomoxui::view {

// Shared by the rows that the pickers draw themselves.

/// Whether `event` is a press of the mouse's first button, or one by keyboard.
[[nodiscard]] bool IsPrimaryPress(moxui::ui::PointerEvent const& event);

/// Notes in `hovered` whether the pointer is over `row`, and has the row drawn anew when that has
/// changed.
void FollowHover(moxui::ui::PointerEvent const& event, moxui::ui::UI_Node& row, bool& hovered);

/// Draws the ground of a row that is chosen or under the pointer.
void DrawRowHighlight(moxui::drawbot::Drawbot& drawbot, moxui::controls::UI_ControlView const& row);

}  // namespace quillomoxui::view
