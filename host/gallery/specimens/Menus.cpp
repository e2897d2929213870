#include "host/gallery/Specimen.h"
#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_PicturePopup.h"
#include "moxui/controls/UI_Popup.h"

namespace quillogallery {
namespace {

using namespace moxui::controls;
using moxcore::string::UTF8to16;

boost::intrusive_ptr<UI_Popup> MakePopup() {
    boost::intrusive_ptr<UI_Popup> popup(new UI_Popup);
    popup->AddHeading(UTF8to16("Accounts"));
    for (char const* const text : {"Northwind Pictures", "Studio & Sons", "אולפן"})
        popup->AddItemWithCustomIcon(UTF8to16(text));
    popup->SetCustomIconMenuItemImageFunction([](UI_PictureSupplyMessage* message, int) {
        message->SetIcon("QuilloFolder_Sm", &moxui::utility::GetResourceManager(), true, nullptr);
    });
    popup->EnableItem(2, false);
    popup->SetValue(1);
    return popup;
}

}  // namespace

Kind Menus() {
    return {
        "menus",
        {{.name = "Drop-down menu", .make = MakePopup, .pressed = false},
         {.name = "Drop-down menu, too long", .make = MakePopup, .size = {90, 0}, .pressed = false},
         {.name = "Drop-down menu, quiet",
          .make =
              [] {
                  auto const popup = MakePopup();
                  popup->SetButtonChromeType(ButtonChromeType::Quiet);
                  return popup;
              },
          .pressed = false},
         {.name = "Menu of commands",
          .make =
              [] {
                  boost::intrusive_ptr<UI_PicturePopup> popup(new UI_PicturePopup);
                  popup->SetImageSupplyFunction(Icon("MoreSmallList_18"));
                  popup->UI_SetAccessibleName(UTF8to16("More"));
                  popup->AddItem(UTF8to16("Create new link"));
                  popup->AddItem(UTF8to16("Sign out"));
                  return popup;
              },
          .pressed = false}}};
}

}  // namespace quillogallery
