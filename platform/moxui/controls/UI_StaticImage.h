#pragma once

#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace moxui::controls {

/// A picture that is only looked at. It is drawn at its own size from the top left corner of the
/// view's rectangle and reaches past a rectangle that is smaller; the view's parent ends it.
///
/// Assistive tools pass over it unless it was given a name (UI_SetAccessibleName): without one it
/// adorns what stands beside it. Main thread.
class MOXUI_API UI_StaticImage : public UI_ControlView {
public:
    UI_StaticImage();
    ~UI_StaticImage() override;

    /// Shows what `function` answers; null shows nothing. It is asked at once, whenever another
    /// theme comes into force, and by RefreshImage.
    void SetImageSupplyFunction(PictureSupplyFunction const& function);
    /// Asks the function anew.
    void RefreshImage();

    /// The picture's rectangle in the view's own coordinates; empty without a picture.
    [[nodiscard]] moxcore::geom::RectT<int> GetImageRect() const;

    void UI_Draw(drawbot::Drawbot* drawbot) const override;
    void UI_ThemeChanged() override;

protected:
    [[nodiscard]] moxcore::geom::RectT<float> UI_GetDrawnRect() const override;

private:
    PictureSupplyFunction supply;
    boost::intrusive_ptr<drawbot::ImageInterface> picture;
};

}  // namespace moxui::controls
