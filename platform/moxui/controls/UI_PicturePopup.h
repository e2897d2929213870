#pragma once

#include <functional>

#include "moxui/controls/ButtonChromeType.h"
#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace moxui::controls {

/// A button that shows a picture and, pressed, opens a menu of commands. A command that the user
/// chooses is notified as a change; GetValue tells which one. Main thread.
class MOXUI_API UI_PicturePopup : public UI_ControlView {
public:
    using MenuFunction = std::function<void(UI_PicturePopup&)>;

    /// `picture` is asked whenever the button is drawn or measured.
    explicit UI_PicturePopup(PictureSupplyFunction picture);
    ~UI_PicturePopup() override;

    void AddItem(moxcore::string::UTF16String const& text);
    [[nodiscard]] int GetItemCount() const;
    /// Nothing where there is no item.
    void EnableItem(int index, bool enabled);

    /// The item that the user chose last, counted from 0 in the order of adding; -1 before.
    [[nodiscard]] int GetValue() const { return value; }

    void SetButtonChromeType(ButtonChromeType type);

    /// `function` runs just before the menu opens.
    void SetPreShowPopupMenuFunction(MenuFunction function);
    /// `function` runs just after the menu has closed, however it was closed, and before the choice
    /// is notified. When the button dies with its menu open it runs, too, and must not take a
    /// reference then.
    void SetPostShowPopupMenuFunction(MenuFunction function);

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const override;

private:
    int value = -1;
};

}  // namespace moxui::controls
