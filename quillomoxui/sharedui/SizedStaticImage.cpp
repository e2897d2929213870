#include "quillomoxui/sharedui/SizedStaticImage.h"

namespace quillomoxui {

SizedStaticImage::SizedStaticImage() {
    UI_SetNodeID("FixedSizeStaticImage");
}

SizedStaticImage::~SizedStaticImage() = default;

moxcore::geom::PointT<float> SizedStaticImage::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    auto const rect = GetImageRect();
    return {static_cast<float>(rect.width), static_cast<float>(rect.height)};
}

}  // namespace quillomoxui
