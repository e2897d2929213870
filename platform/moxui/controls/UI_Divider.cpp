#include "moxui/controls/UI_Divider.h"

#include "moxui/drawbot/Drawbot.h"

namespace moxui::controls {

UI_Divider::UI_Divider() {
    UI_SetFocusable(false, ui::AccessibleRole::Decoration);
}

UI_Divider::~UI_Divider() = default;

moxcore::geom::PointT<float> UI_Divider::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    return {0, skins::ThemeProvider::Get().GetSize(skins::ThemeSize::LineWidth)};
}

void UI_Divider::UI_Draw(drawbot::Drawbot* drawbot) const {
    drawbot->GetSurface()->PaintRect(
        skins::utilities::GetHalcynGrayColor(GetThemeProvider(), skins::HalcynGrayColor::Level4),
        UI_GetLocalRectF(false));
}

}  // namespace moxui::controls
