#include "moxui/controls/UI_TextButton.h"

namespace moxui::controls {

UI_TextButton::UI_TextButton() = default;

UI_TextButton::UI_TextButton(moxcore::string::UTF16String const& text) {
    SetText(text);
}

UI_TextButton::~UI_TextButton() = default;

}  // namespace moxui::controls
