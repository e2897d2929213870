#pragma once

#include "moxui/controls/UI_FramedButton.h"

namespace moxui::controls {

/// A button with a text, which is its accessible name. Main thread.
class MOXUI_API UI_TextButton : public UI_FramedButton {
public:
    UI_TextButton();
    explicit UI_TextButton(moxcore::string::UTF16String const& text);
    ~UI_TextButton() override;

    using UI_Button::GetText;
    using UI_Button::SetFontStyleName;
    using UI_Button::SetText;
};

}  // namespace moxui::controls
