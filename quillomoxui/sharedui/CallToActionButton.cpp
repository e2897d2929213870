#include "quillomoxui/sharedui/CallToActionButton.h"

namespace quillomoxui::sharedui {

CallToActionButton::CallToActionButton() {
    namespace ThemeColor = moxui::skins::ThemeColor;
    constexpr moxui::drawbot::ColorRGBA kBlue{0.14901961F, 0.49803922F, 0.92156863F, 1};
    constexpr moxui::drawbot::ColorRGBA kWhite{1, 1, 1, 1};
    SetButtonChromeType(moxui::controls::ButtonChromeType::Push);
    SetBorderDisplay(moxui::controls::DisplayWhen::Never);
    SetCustomThemeColor(ThemeColor::kButtonHovered, kBlue);
    SetCustomThemeColor(ThemeColor::kButtonGround, kBlue);
    SetCustomThemeColor(ThemeColor::kButtonText, kWhite);
    SetFontStyleName("Bold");
}

CallToActionButton::~CallToActionButton() = default;

}  // namespace quillomoxui::sharedui
