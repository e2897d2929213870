#pragma once

#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui::view {

/// One line of text on a rounded panel. Main thread.
class TextWithBackground : public moxui::controls::UI_ControlView {
public:
    explicit TextWithBackground(UTF16String const& value);
    ~TextWithBackground() override;

    void SetValue(UTF16String const& value);

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;
    void UI_Draw(moxui::drawbot::Drawbot* drawbot) const override;

private:
    boost::intrusive_ptr<moxui::controls::UI_StaticText> text;
};

}  // namespace quillomoxui::view
