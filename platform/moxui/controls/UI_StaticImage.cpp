#include "moxui/controls/UI_StaticImage.h"

#include <algorithm>

#include "moxui/drawbot/Drawbot.h"

namespace moxui::controls {

UI_StaticImage::UI_StaticImage() {
    UI_SetFocusable(false, ui::AccessibleRole::Image);
}

UI_StaticImage::~UI_StaticImage() = default;

void UI_StaticImage::SetImageSupplyFunction(PictureSupplyFunction const& function) {
    supply = function;
    RefreshImage();
}

void UI_StaticImage::RefreshImage() {
    picture = SuppliedPicture(supply);
    UI_DrawnRectChanged();
    UI_Invalidate();
}

moxcore::geom::RectT<int> UI_StaticImage::GetImageRect() const {
    if (!picture) return {};
    auto const size = picture->GetSize();
    return {0, 0, size.x, size.y};
}

void UI_StaticImage::UI_Draw(drawbot::Drawbot* drawbot) const {
    if (picture) drawbot->GetSurface()->DrawImage(*picture, {0, 0}, 1);
}

void UI_StaticImage::UI_ThemeChanged() {
    UI_ControlView::UI_ThemeChanged();
    RefreshImage();
}

moxcore::geom::RectT<float> UI_StaticImage::UI_GetDrawnRect() const {
    auto const place = UI_GetLocalRectF(true);
    auto const image = GetImageRect();
    return {place.x, place.y, std::max(place.width, static_cast<float>(image.width)),
            std::max(place.height, static_cast<float>(image.height))};
}

}  // namespace moxui::controls
