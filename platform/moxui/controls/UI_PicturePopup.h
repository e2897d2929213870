#pragma once

#include <functional>

#include "moxui/controls/UI_PictureButton.h"

namespace moxui::controls {

/// A button that shows a picture and, pressed, opens a menu of commands. Only the choice of a
/// command notifies; GetValue returns which one. Main thread.
///
/// The menu opens with a click, Space, Enter, Up or Down, and is worked with the arrows, Home, End
/// and by typing the beginning of a command; Enter chooses and Escape leaves all as it was. It may
/// open inside a popup window, which stays open meanwhile.
class MOXUI_API UI_PicturePopup : public UI_PictureButton {
public:
    using MenuFunction = std::function<void(UI_PicturePopup&)>;

    UI_PicturePopup();
    ~UI_PicturePopup() override;

    void AddItem(moxcore::string::UTF16String const& text);
    [[nodiscard]] int GetItemCount() const;
    /// A disabled command is seen, and cannot be chosen. Nothing where there is none.
    void EnableItem(int index, bool enabled);

    /// The command that the user chose last, counted from 0 in the order of adding; -1 before.
    [[nodiscard]] int GetValue() const { return value; }

    /// `function` runs just before the menu opens, and may change the commands.
    void SetPreShowPopupMenuFunction(MenuFunction function);
    /// `function` runs just after the menu has closed, however it was closed, and before a choice
    /// is notified. When the button dies with its menu open it runs, too, and must not take a
    /// reference then.
    void SetPostShowPopupMenuFunction(MenuFunction function);

protected:
    void OnPressed() override;

private:
    class Menu;
    Menu* menu;  // the widget's, and with it gone
    int value = -1;
};

}  // namespace moxui::controls
