#pragma once

#include "moxui/controls/UI_Button.h"

namespace moxui::controls {

/// A text that leads elsewhere: drawn in kLink, underlined under the pointer and with the focus,
/// and a link to assistive tools. It notifies as every button does; mouse-event functions
/// (UI_AddCustomMouseEventFunction) act on its press by mouse and by Enter and Space. Main thread.
class MOXUI_API UI_HotTextButton : public UI_Button {
public:
    explicit UI_HotTextButton(moxcore::string::UTF16String const& text = {});
    ~UI_HotTextButton() override;

    using UI_Button::GetText;
    using UI_Button::SetFontStyleName;
    using UI_Button::SetText;
    /// The toolkit's setting 2 is TruncationMode::End; 3 is TruncationMode::Start, for a path whose
    /// end matters most.
    using UI_Button::SetTruncationMode;

    /// The text's own size, in whole units.
    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const override;

protected:
    [[nodiscard]] moxcore::geom::RectT<float> UI_GetDrawnRect() const override;
};

}  // namespace moxui::controls
