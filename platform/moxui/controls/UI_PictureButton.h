#pragma once

#include "moxui/controls/UI_FramedButton.h"

namespace moxui::controls {

/// A button with a picture in its middle. Quiet (ButtonChromeType) by default. Give it an
/// accessible name. Main thread.
class MOXUI_API UI_PictureButton : public UI_FramedButton {
public:
    UI_PictureButton();
    ~UI_PictureButton() override;

    using UI_FramedButton::RefreshImage;
    using UI_FramedButton::SetImageSupplyFunction;
};

}  // namespace moxui::controls
