#pragma once

#include "moxui/controls/UI_StaticImage.h"

namespace quillomoxui {

/// A picture that is as large as it is. Main thread.
class SizedStaticImage : public moxui::controls::UI_StaticImage {
public:
    SizedStaticImage();
    ~SizedStaticImage() override;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
};

}  // namespace quillomoxui
