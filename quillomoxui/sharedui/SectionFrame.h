#pragma once

#include "moxui/drawbot/Drawbot.h"
#include "moxui/ui/UI_Container.h"

namespace quillomoxui {

/// Strokes the rectangle of every child of `container` that has one, just outside of it, so that
/// the lines of neighbours one frame's width apart fall together.
void StrokeAroundChildren(moxui::drawbot::Drawbot& drawbot,
                          moxui::ui::UI_Container const& container,
                          moxui::drawbot::ColorRGBA const& color, float width);

}  // namespace quillomoxui
