#include "moxui/controls/UI_Popup.h"

#include <utility>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/menus/DropDown.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"

namespace moxui::controls {
namespace {

using backend::DropDown;
using Kind = backend::MenuModel::Kind;

DropDown* WidgetOf(UI_Popup const& popup) {
    return popup.GetPeer().GetWidgetAs<DropDown>();
}

/// `function` called with the popup that `widget` shows, if there still is one.
std::function<void()> ForPopup(DropDown* widget, UI_Popup::MenuFunction function) {
    if (!function) return nullptr;
    return [widget, function = std::move(function)] {
        if (widget->node) function(static_cast<UI_Popup&>(*widget->node));
    };
}

}  // namespace

UI_Popup::UI_Popup(int, bool) : UI_ControlView(backend::MakePeer<DropDown>()) {
    // The peer ends the connection before this goes.
    QObject::connect(WidgetOf(*this), &QComboBox::activated, GetPeer().Context(), [this](int row) {
        SetValue(row);
        NotifyChanged();
    });
}

UI_Popup::~UI_Popup() {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->hidePopup();
    widget->Entries().picture = nullptr;
}

void UI_Popup::AddHeading(moxcore::string::UTF16String const& text) {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().Append(Kind::Heading, text);
    ShowValue();
}

void UI_Popup::AddItem(moxcore::string::UTF16String const& text) {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().Append(Kind::Item, text);
    ShowValue();
}

void UI_Popup::AddItemWithCustomIcon(moxcore::string::UTF16String const& text) {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().Append(Kind::CustomIconItem, text);
    ShowValue();
}

void UI_Popup::InsertItemWithCustomIcon(int index, moxcore::string::UTF16String const& text) {
    if (auto* const widget = WidgetOf(*this))
        widget->Entries().Insert(index, Kind::CustomIconItem, text);
    ShowValue();
}

void UI_Popup::DeleteItem(int index) {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().Remove(index);
    ShowValue();
}

void UI_Popup::DeleteAllItems() {
    boost::intrusive_ptr<UI_Popup> const alive(this);  // a handler of the menu's end may release it
    if (auto* const widget = WidgetOf(*this); widget && widget->IsOpen()) widget->hidePopup();
    if (auto* const widget = WidgetOf(*this)) widget->Entries().Clear();
    ShowValue();
}

int UI_Popup::GetItemCount() const {
    auto const* const widget = WidgetOf(*this);
    return widget ? widget->Entries().rowCount() : 0;
}

moxcore::string::UTF16String UI_Popup::GetItemText(int index) const {
    auto const* const widget = WidgetOf(*this);
    return widget ? backend::FromQString(widget->Entries().Text(index).GetWhole())
                  : moxcore::string::UTF16String();
}

void UI_Popup::EnableItem(int index, bool enabled) {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().SetEnabled(index, enabled);
}

void UI_Popup::EnableAllItems() {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().EnableAll();
}

void UI_Popup::SetCustomIconMenuItemImageFunction(ItemImageFunction function) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    auto& picture = widget->Entries().picture;
    picture = nullptr;
    if (function)
        picture = [function = std::move(function)](int row) {
            UI_PictureSupplyMessage message;
            backend::CallFromQt([&] { function(&message, row); });
            return message.GetPicture();
        };
    ShowValue();
}

void UI_Popup::SetValue(int newValue) {
    value = newValue;
    ShowValue();
}

void UI_Popup::ShowValue() {
    if (auto* const widget = WidgetOf(*this))
        widget->ShowEntry(widget->Entries().IsItem(value) ? value : -1);
}

void UI_Popup::SetPickerMeasureStrategy(PickerMeasureStrategy strategy) {
    measureStrategy = strategy;
}

void UI_Popup::SetButtonChromeType(ButtonChromeType type) {
    if (auto* const widget = WidgetOf(*this)) widget->SetChrome(type);
}

void UI_Popup::SetPreShowPopupMenuFunction(MenuFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->notices.before = ForPopup(widget, std::move(function));
}

void UI_Popup::SetPostShowPopupMenuFunction(MenuFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->notices.after = ForPopup(widget, std::move(function));
}

moxcore::geom::PointT<float> UI_Popup::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    auto const* const widget = WidgetOf(*this);
    if (!widget) return {};
    auto const& entries = widget->Entries();
    int const text = measureStrategy == PickerMeasureStrategy::WidestItem
                         ? entries.WidestText(widget->font())
                         : entries.Text(widget->ShownEntry()).NaturalSize(widget->font()).width();
    return {static_cast<float>(widget->WidthFor(text)),
            GetThemeProvider().GetSize(skins::ThemeSize::ControlHeight)};
}

}  // namespace moxui::controls
