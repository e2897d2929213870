#include "host/gallery/Specimen.h"
#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_Divider.h"
#include "moxui/controls/UI_ProgressBar.h"
#include "moxui/controls/UI_StaticImage.h"
#include "moxui/controls/UI_StaticText.h"

namespace quillogallery {
namespace {

using namespace moxui::controls;
using moxcore::string::UTF8to16;

Specimen Text(char const* name, char const* text, float width, char const* style = "",
              bool multiLine = false) {
    return {.name = name,
            .make =
                [=] {
                    boost::intrusive_ptr<UI_StaticText> view(new UI_StaticText(UTF8to16(text)));
                    view->SetFontStyleName(style);
                    view->SetMultiLine(multiLine);
                    return view;
                },
            .size = {width, multiLine ? 46.0F : 0.0F},
            .worked = false};
}

Specimen Progress(unsigned permille) {
    return {.name = "Progress " + std::to_string(permille / 10) + " %",
            .make =
                [=] {
                    boost::intrusive_ptr<UI_ProgressBar> view(new UI_ProgressBar);
                    view->SetProgress(permille, 1000);
                    return view;
                },
            .size = {120, 12},
            .worked = false};
}

}  // namespace

Kind Texts() {
    return {"texts",
            {Text("Text", "Share for review:", 0),
             Text("Text, bold", "Share for review:", 0, "Bold"),
             Text("Text, too long", "A sequence with quite a long name", 120),
             Text("Text, right to left", "שלום עולם", 120),
             Text("Text, as it stands", "<b>Q&A</b>\tTake 1", 0),
             Text("Text, several lines", "Link will be available once the export completes", 120,
                  "", true),
             {.name = "Picture",
              .make =
                  [] {
                      boost::intrusive_ptr<UI_StaticImage> view(new UI_StaticImage);
                      view->SetImageSupplyFunction(Icon("QuilloFolder_Sm"));
                      return view;
                  },
              .size = {18, 18},
              .worked = false},
             {.name = "Divider",
              .make = [] { return boost::intrusive_ptr<UI_Divider>(new UI_Divider); },
              .size = {120, 1},
              .worked = false},
             Progress(0),
             Progress(456),
             Progress(1000)}};
}

}  // namespace quillogallery
