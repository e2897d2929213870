#include "moxui/controls/UI_PictureButton.h"

namespace moxui::controls {

UI_PictureButton::UI_PictureButton() {
    SetButtonChromeType(ButtonChromeType::Quiet);
}

UI_PictureButton::~UI_PictureButton() = default;

}  // namespace moxui::controls
