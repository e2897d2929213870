#include "quillomoxui/view/TextWithBackground.h"

#include <algorithm>

#include "moxui/drawbot/Utilities.h"
#include "quillomoxui/view/Layout.h"

namespace quillomoxui::view {

using moxcore::geom::RectT;

TextWithBackground::TextWithBackground(UTF16String const& value)
    : text(new moxui::controls::UI_StaticText) {
    text->SetText(value);
    AddShown(*this, text);
}

TextWithBackground::~TextWithBackground() = default;

void TextWithBackground::SetValue(UTF16String const& value) {
    text->SetText(value);
    UI_SetLocalRectF(UI_GetLocalRectF(true));
}

moxcore::geom::PointT<float> TextWithBackground::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {310, 20};
}

void TextWithBackground::UI_SetLocalRectF(RectT<float> const& rect) {
    UI_ControlView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    constexpr float kLeft = 6;
    auto const size = layout.SizeOf(*text);
    // A link may be longer than the panel: it ends, with an ellipsis, as far from the right edge.
    text->UI_SetLocalRectF({kLeft, 2, std::min(size.x, rect.width - 2 * kLeft), size.y});
}

void TextWithBackground::UI_Draw(moxui::drawbot::Drawbot* drawbot) const {
    auto const path = drawbot->GetSupplier()->NewPath();
    FormRoundedRect(*path, Grown(UI_GetLocalRectF(false), -0.5F), 2);
    drawbot->GetSurface()->FillPath(moxui::skins::utilities::GetHalcynGrayColor(
                                        GetThemeProvider(), moxui::skins::HalcynGrayColor::Level0),
                                    *path);
    UI_ControlView::UI_Draw(drawbot);
}

}  // namespace quillomoxui::view
