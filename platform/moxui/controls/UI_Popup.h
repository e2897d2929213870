#pragma once

#include <functional>

#include "moxui/controls/ButtonChromeType.h"
#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace moxui::controls {

/// How a popup's preferred width is measured.
enum class PickerMeasureStrategy {
    ChosenItem = 1,  // what it shows now
    WidestItem = 2,  // the widest of its entries, so that it does not change with the choice
};

/// A button that shows the chosen one of several entries and, pressed, opens a menu of them. Main
/// thread.
///
/// Entries are counted from 0 in the order in which they were added, headings included. The menu
/// opens with a click, Space, Enter, Up or Down, and is worked with the arrows, Home, End, the Page
/// keys and by typing the beginning of an entry; Enter chooses and Escape leaves all as it was. A
/// menu that is too long scrolls. It may open inside a popup window, which stays open meanwhile.
class MOXUI_API UI_Popup : public UI_ControlView {
public:
    using MenuFunction = std::function<void(UI_Popup&)>;
    using ItemImageFunction = std::function<void(UI_PictureSupplyMessage*, int index)>;

    /// `popupType` 0 and `hasTitle` false: the one kind there is.
    explicit UI_Popup(int popupType = 0, bool hasTitle = false);
    ~UI_Popup() override;

    /// An entry that groups those after it, and cannot be chosen.
    void AddHeading(moxcore::string::UTF16String const& text);
    void AddItem(moxcore::string::UTF16String const& text);
    /// An entry with a picture, for which the item image function is asked.
    void AddItemWithCustomIcon(moxcore::string::UTF16String const& text);
    /// An open menu is closed, without a choice.
    void DeleteAllItems();

    /// The same before the entry at `index`, or at the end where there is none. When the menu is
    /// open, it stays so, with the highlight on the entry that it was on.
    void InsertItemWithCustomIcon(int index, moxcore::string::UTF16String const& text);
    /// Nothing where there is no entry. An open menu stays open here, too.
    void DeleteItem(int index);

    [[nodiscard]] int GetItemCount() const;
    /// Empty where there is no entry.
    [[nodiscard]] moxcore::string::UTF16String GetItemText(int index) const;

    /// A disabled entry is seen, and cannot be chosen. Nothing where there is no entry.
    void EnableItem(int index, bool enabled);
    void EnableAllItems();

    /// Asked, whenever an entry with a custom icon is drawn, for the picture of the entry at
    /// `index`.
    void SetCustomIconMenuItemImageFunction(ItemImageFunction function);

    /// Shows the entry at `value` as chosen; nothing while there is no such entry, or while it is a
    /// heading. Notifies nobody.
    void SetValue(int value);
    /// The value set or chosen last; 0 before.
    [[nodiscard]] int GetValue() const { return value; }

    void SetPickerMeasureStrategy(PickerMeasureStrategy strategy);
    void SetButtonChromeType(ButtonChromeType type);

    /// `function` runs just before the menu opens, and may change the entries.
    void SetPreShowPopupMenuFunction(MenuFunction function);
    /// `function` runs just after the menu has closed, however it was closed, and before the
    /// choice is notified. When the popup dies with its menu open it runs, too, and must not take a
    /// reference then.
    void SetPostShowPopupMenuFunction(MenuFunction function);

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        drawbot::Drawbot* drawbot) const override;

private:
    void ShowValue();

    int value = 0;
    PickerMeasureStrategy measureStrategy = PickerMeasureStrategy::ChosenItem;
};

}  // namespace moxui::controls
