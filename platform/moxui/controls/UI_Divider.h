#pragma once

#include "moxui/controls/UI_ControlView.h"

namespace moxui::controls {

/// A line between what stands above and below it (or on its sides): it fills its rectangle.
/// Assistive tools pass over it. Main thread.
class MOXUI_API UI_Divider : public UI_ControlView {
public:
    UI_Divider();
    ~UI_Divider() override;

    /// A line's height; any width.
    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const override;
    void UI_Draw(drawbot::Drawbot* drawbot) const override;
};

}  // namespace moxui::controls
