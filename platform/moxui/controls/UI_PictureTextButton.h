#pragma once

#include "moxui/controls/UI_TextButton.h"

namespace moxui::controls {

/// A text button with a picture before its text. Main thread.
class MOXUI_API UI_PictureTextButton : public UI_TextButton {
public:
    UI_PictureTextButton();
    explicit UI_PictureTextButton(moxcore::string::UTF16String const& text);
    ~UI_PictureTextButton() override;

    using UI_FramedButton::RefreshImage;
    using UI_FramedButton::SetImageSupplyFunction;
};

}  // namespace moxui::controls
