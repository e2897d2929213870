#include "moxui/controls/UI_PictureTextButton.h"

namespace moxui::controls {

UI_PictureTextButton::UI_PictureTextButton() = default;

UI_PictureTextButton::UI_PictureTextButton(moxcore::string::UTF16String const& text)
    : UI_TextButton(text) {}

UI_PictureTextButton::~UI_PictureTextButton() = default;

}  // namespace moxui::controls
