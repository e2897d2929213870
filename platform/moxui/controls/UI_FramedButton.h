#pragma once

#include "moxui/controls/ButtonChromeType.h"
#include "moxui/controls/UI_Button.h"
#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace moxui::controls {

/// A button with a ground (its container) and a border around what it shows. It is drawn in
/// kButtonText, kButtonGround and kButtonHovered, each of which SetCustomThemeColor replaces for
/// this button; disabled in kDisabledText and kControl. Main thread.
class MOXUI_API UI_FramedButton : public UI_Button {
public:
    ~UI_FramedButton() override;

    /// Sets when the container and the border are drawn, both at once.
    void SetButtonChromeType(ButtonChromeType type);
    void SetContainerDisplay(DisplayWhen when);
    void SetBorderDisplay(DisplayWhen when);

    /// Whether the button comes up again when it is let go, as it does unless called with false: it
    /// then stays down (on) until the next press.
    void SetSpringLoaded(bool springLoaded);
    /// Whether a button that is not spring-loaded is down; notified of by NotifyWhenChanged.
    [[nodiscard]] bool IsOn() const;

    /// Whether a default button (SetDefaultButton) is marked as such. It is unless called.
    void SetCommitAppearance(bool marked);

    /// As high as the theme's controls; as wide as what it shows and the room around that, or, with
    /// a picture alone, as high.
    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const override;
    void UI_ThemeChanged() override;

protected:
    UI_FramedButton();

    /// A picture alone has room for its frame even where its place is no larger than itself.
    [[nodiscard]] moxcore::geom::RectT<float> UI_GetDrawnRect() const override;

    // For buttons that show a picture, which make these public.
    /// Shows what `function` answers; null shows nothing. It is asked at once, whenever another
    /// theme comes into force, and by RefreshImage.
    void SetImageSupplyFunction(PictureSupplyFunction const& function);
    /// Asks the function anew.
    void RefreshImage();

private:
    PictureSupplyFunction supply;
};

}  // namespace moxui::controls
