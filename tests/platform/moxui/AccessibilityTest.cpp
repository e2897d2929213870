#include <gmock/gmock.h>

#include <QAccessible>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_Divider.h"
#include "moxui/controls/UI_HotTextURL.h"
#include "moxui/controls/UI_PictureButton.h"
#include "moxui/controls/UI_PictureTextButton.h"
#include "moxui/controls/UI_ProgressBar.h"
#include "moxui/controls/UI_StaticImage.h"
#include "moxui/controls/UI_StaticText.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::string::UTF8to16;

struct Told {
    QAccessible::Role role;
    std::string name;
    bool focusable;

    friend bool operator==(Told const&, Told const&) = default;
    friend void PrintTo(Told const& told, std::ostream* out) {
        *out << told.role << " \"" << told.name << '"' << (told.focusable ? " focusable" : "");
    }
};

/// What an assistive tool finds below `root`, in its order; what it is to pass over is left out.
std::vector<Told> TellAll(QAccessibleInterface* root) {
    std::vector<Told> told;
    std::vector<QAccessibleInterface*> open{root};
    while (!open.empty()) {
        auto* const interface = open.back();
        open.pop_back();
        auto const state = interface->state();
        if (!state.invisible)
            told.push_back({interface->role(), interface->text(QAccessible::Name).toStdString(),
                            static_cast<bool>(state.focusable)});
        for (int i = interface->childCount(); i-- > 0;)
            open.push_back(interface->child(i));
    }
    return told;
}

TEST(Accessibility, EveryControlIsToldByItsRoleAndNameAndWhatAdornsIsNot) {
    testsupport::TestWindow window;
    auto add = [&, y = 0.0F](auto* control) mutable {
        window.Add(control, {0, y += 22, 120, 20});
        return control;
    };
    auto const picture = testsupport::ToolkitPicture("QuilloFolder_Sm");
    add(new UI_StaticText(UTF8to16("Location:")));
    add(new UI_Divider);
    add(new UI_StaticImage)->SetImageSupplyFunction(picture);
    add(new UI_StaticImage)->UI_SetAccessibleName(UTF8to16("Sequence"));
    add(new UI_TextButton(UTF8to16("Q & A")));
    add(new UI_PictureTextButton(UTF8to16("Copy link")))->SetImageSupplyFunction(picture);
    add(new UI_PictureButton)->UI_SetAccessibleName(UTF8to16("Link settings"));
    add(new UI_HotTextButton(UTF8to16("<Select> & go")));
    add(new UI_HotTextURL(UTF8to16("https://quillo.example")))
        ->UI_SetAccessibleName(UTF8to16("Review link"));
    add(new UI_ProgressBar)->UI_SetAccessibleName(UTF8to16("Upload"));

    auto const told =
        TellAll(QAccessible::queryAccessibleInterface(&testsupport::WidgetOf(window.Container())));
    EXPECT_THAT(told, ::testing::ElementsAre(Told{QAccessible::Grouping, "", false},
                                             Told{QAccessible::StaticText, "Location:", false},
                                             Told{QAccessible::Graphic, "Sequence", false},
                                             Told{QAccessible::Button, "Q & A", true},
                                             Told{QAccessible::Button, "Copy link", true},
                                             Told{QAccessible::Button, "Link settings", true},
                                             Told{QAccessible::Link, "<Select> & go", true},
                                             Told{QAccessible::Link, "Review link", true},
                                             Told{QAccessible::ProgressBar, "Upload", false}));
}

}  // namespace
}  // namespace moxui::controls
