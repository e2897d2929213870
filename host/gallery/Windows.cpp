#include "host/gallery/Windows.h"

#include "host/gallery/Specimen.h"
#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"

namespace quillogallery {
namespace {

using namespace moxui::controls;
using moxcore::string::UTF8to16;

constexpr moxcore::geom::PointT<float> kPopupSize{240, 120};

template <class View>
boost::intrusive_ptr<View> Add(moxui::ui::UI_Container& container, View* view,
                               moxcore::geom::RectT<float> const& rect) {
    boost::intrusive_ptr<View> const added(view);
    container.ChildPushBack(added);
    added->UI_SetLocalRectF(rect);
    added->UI_Show(true);
    return added;
}

}  // namespace

boost::intrusive_ptr<UI_TouchPopupContainer> MakePopup(
    boost::intrusive_ptr<moxui::ui::UI_Node> const& anchor) {
    boost::intrusive_ptr<UI_TouchPopupContainer> popup(
        new UI_TouchPopupContainer(anchor->UI_GetDrawSupplier(), anchor, false, true, false,
                                   moxui::ui::DPISelectionType::OwnScreen, true));
    auto& content = *popup->GetContainer();
    Add(content, new UI_StaticText(UTF8to16("Share for review:")), {15, 12, 200, 16})
        ->SetFontStyleName("Bold");
    auto const menu = Add(content, new UI_Popup, {15, 40, 130, 20});
    for (char const* const text : {"Northwind Pictures", "Studio & Sons"})
        menu->AddItem(UTF8to16(text));
    auto* const window = popup.get();
    menu->SetPreShowPopupMenuFunction([window](UI_Popup&) { window->SetPopupMenuShowing(true); });
    menu->SetPostShowPopupMenuFunction([window](UI_Popup&) { window->SetPopupMenuShowing(false); });
    Add(content, new UI_TextButton(UTF8to16("Cancel")), {75, 85, 70, 20});
    Add(content, new UI_TextButton(UTF8to16("Share")), {155, 85, 70, 20});
    return popup;
}

void Show(UI_TouchPopupContainer& popup, moxui::ui::UI_Node const& anchor) {
    popup.StartPopup();
    auto const place = anchor.UI_LocalToGlobalF(anchor.UI_GetLocalRectF(false));
    popup.SetContentSize({place.x + place.width - kPopupSize.x, place.y + place.height + 4,
                          kPopupSize.x, kPopupSize.y});
    popup.Refresh();
}

boost::intrusive_ptr<moxui::ui::UI_Dialog> MakeDialog(moxui::ui::UI_Node& node) {
    boost::intrusive_ptr<moxui::ui::UI_Dialog> dialog(new moxui::ui::UI_Dialog(
        node.UI_GetDrawSupplier(), UTF8to16("Choose a folder"), node.UI_GetOSWindow(), true));
    dialog->SetContentSize(280, 110);
    dialog->Position();
    auto& content = *dialog->GetContentContainer();
    Add(content, new UI_StaticText(UTF8to16("Northwind Pictures / Trailer / Reels")),
        {15, 15, 250, 16});
    boost::intrusive_ptr<UI_Button> const cancel =
        Add(content, new UI_TextButton(UTF8to16("Cancel")), {110, 75, 70, 20});
    boost::intrusive_ptr<UI_Button> const commit =
        Add(content, new UI_TextButton(UTF8to16("Choose")), {195, 75, 70, 20});
    dialog->SetButtons(cancel, commit);
    return dialog;
}

}  // namespace quillogallery
