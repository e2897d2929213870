#pragma once

#include <string>

#include "moxui/controls/UI_ControlView.h"
#include "moxui/drawbot/TruncationMode.h"

namespace moxui::controls {

/// On which side of its place a text stands. Leading is the side on which the layout begins: the
/// left, or the right in an application that goes from right to left. The numbers are the
/// toolkit's.
enum class TextAlignment {
    Leading = 0,
    Center = 1,
    Trailing = 2,
};

/// A text that is only read: one line, or several, wrapped at the width that it is given. It stands
/// in the middle of a place that is higher than one line; several lines begin at the top. What does
/// not fit is left out with an ellipsis, and the whole text then is the tooltip, unless
/// UI_SetToolTip gave another. A line is never cut at its top or foot, however low its place.
///
/// Any Unicode goes: what looks like markup is shown as it stands, and a control character as a
/// space (in several lines a line feed begins a new one). Drawn in kText, or kDisabledText when it
/// is disabled. Main thread.
class MOXUI_API UI_StaticText : public UI_ControlView {
public:
    UI_StaticText();
    explicit UI_StaticText(moxcore::string::UTF16String const& text);
    ~UI_StaticText() override;

    void SetText(moxcore::string::UTF16String const& text);
    /// As it was given.
    [[nodiscard]] moxcore::string::UTF16String const& GetText() const { return text; }

    /// "", "Regular" or "Bold": the theme's face in that style. Another name is that of a face:
    /// that one, or the theme's where the system has none of that name.
    void SetFontStyleName(std::string const& name);
    /// Leading unless called.
    void SetAlignment(TextAlignment alignment);
    /// Where the ellipsis goes; the toolkit's text setting 2 is TruncationMode::End, which holds
    /// unless this is called. With None the text is cut where its place ends.
    void SetTruncationMode(drawbot::TruncationMode mode);
    /// One line unless called with true.
    void SetMultiLine(bool multiLine);

    /// Makes it a status: assistive tools announce it when it is shown, and each text after that.
    /// Before the control is shown.
    void SetStatus();

    /// The text's own size, in whole units: unwrapped, and one line high even when it is empty.
    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const override;

protected:
    [[nodiscard]] moxcore::geom::RectT<float> UI_GetDrawnRect() const override;

private:
    moxcore::string::UTF16String text;
};

}  // namespace moxui::controls
