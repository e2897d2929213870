#include "quillomoxui/view/RowHighlight.h"

#include "moxui/drawbot/Utilities.h"

namespace quillomoxui::view {

using moxui::ui::PointerAction;

bool IsPrimaryPress(moxui::ui::PointerEvent const& event) {
    auto const* const mouse = event.GetMouseEvent();
    return mouse && mouse->GetAction() == PointerAction::Press && mouse->GetButton() == 1;
}

void FollowHover(moxui::ui::PointerEvent const& event, moxui::ui::UI_Node& row, bool& hovered) {
    if (!event.GetMouseEvent()) return;
    if (event.GetAction() != (hovered ? PointerAction::Leave : PointerAction::Enter)) return;
    hovered = !hovered;
    row.UI_Invalidate();
}

void DrawRowHighlight(moxui::drawbot::Drawbot& drawbot,
                      moxui::controls::UI_ControlView const& row) {
    auto const path = drawbot.GetSupplier()->NewPath();
    FormRoundedRect(*path, row.UI_GetLocalRectF(false), 2);
    drawbot.GetSurface()->FillPath(row.GetColor(moxui::skins::ThemeColor::kHighlight), *path);
}

}  // namespace quillomoxui::view
