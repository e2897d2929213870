#include "host/gallery/Specimen.h"
#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_HotTextButton.h"
#include "moxui/controls/UI_HotTextURL.h"
#include "moxui/controls/UI_PictureButton.h"
#include "moxui/controls/UI_PictureTextButton.h"
#include "moxui/controls/UI_TextButton.h"
#include "moxui/skins/ThemeProvider.h"

namespace quillogallery {
namespace {

using namespace moxui::controls;
using moxcore::string::UTF8to16;

Specimen TextButton(char const* name, char const* text, float width = 0) {
    return {.name = name,
            .make = [=] { return boost::intrusive_ptr(new UI_TextButton(UTF8to16(text))); },
            .size = {width, 0}};
}

/// Stays down once it is pressed.
Specimen Switch() {
    return {.name = "Button that stays down",
            .make =
                [] {
                    boost::intrusive_ptr button(new UI_TextButton(UTF8to16("Snap")));
                    button->SetSpringLoaded(false);
                    return button;
                },
            .check = [](UI_ControlView& view) { static_cast<UI_Button&>(view).Press(); }};
}

/// In colours of its own.
Specimen CallToAction() {
    return {.name = "Button in its own colours", .make = [] {
                boost::intrusive_ptr button(new UI_TextButton(UTF8to16("Sign in")));
                namespace Key = moxui::skins::ThemeColor;
                button->SetCustomThemeColor(Key::kButtonText, {1, 1, 1, 1});
                button->SetCustomThemeColor(Key::kButtonGround, {0.05F, 0.35F, 0.8F, 1});
                button->SetCustomThemeColor(Key::kButtonHovered, {0.1F, 0.4F, 0.85F, 1});
                return button;
            }};
}

}  // namespace

Kind Buttons() {
    return {
        "buttons",
        {TextButton("Button", "Cancel"),
         TextButton("Button, too long", "Share this sequence for review", 100),
         TextButton("Button, as it stands", "Q&A <b>"),
         Switch(),
         CallToAction(),
         {.name = "Picture and text",
          .make =
              [] {
                  boost::intrusive_ptr button(new UI_PictureTextButton(UTF8to16("New folder")));
                  button->SetImageSupplyFunction(Icon("QuilloFolder_Sm"));
                  return button;
              }},
         {.name = "Picture button",
          .make =
              [] {
                  boost::intrusive_ptr button(new UI_PictureButton);
                  button->SetImageSupplyFunction(Icon("S_ChevronLeft_18"));
                  button->UI_SetAccessibleName(UTF8to16("Back"));
                  return button;
              }},
         {.name = "Link",
          .make = [] { return boost::intrusive_ptr(new UI_HotTextButton(UTF8to16("Choose..."))); }},
         {.name = "Web address, too long",
          .make =
              [] {
                  auto const url = UTF8to16("https://review.example/r/7f3a9c21-55d0");
                  boost::intrusive_ptr link(new UI_HotTextURL(url));
                  link->SetURL(url);
                  return link;
              },
          .size = {140, 20}}}};
}

}  // namespace quillogallery
