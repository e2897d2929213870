#include <gmock/gmock.h>

#include <QAccessible>
#include <QDialog>
#include <QTest>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_HotTextButton.h"
#include "moxui/controls/UI_PictureButton.h"
#include "moxui/controls/UI_PictureTextButton.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::string::UTF8to16;
using testsupport::TestWindow;
using testsupport::ToolTipOver;
using testsupport::WidgetOf;
using Button = boost::intrusive_ptr<UI_Button>;

constexpr drawbot::ColorRGBA kBlue{38 / 255.0F, 127 / 255.0F, 235 / 255.0F, 1};

Button MakeText() {
    return new UI_TextButton(UTF8to16("Cancel"));
}

Button MakeCallToAction() {
    auto* const button = new UI_TextButton(UTF8to16("Choose"));
    button->SetButtonChromeType(ButtonChromeType::Push);
    button->SetBorderDisplay(DisplayWhen::Never);
    button->SetCustomThemeColor(5000017, kBlue);
    button->SetCustomThemeColor(5000016, kBlue);
    button->SetCustomThemeColor(5000015, {1, 1, 1, 1});
    button->SetFontStyleName("Bold");
    return button;
}

Button MakePicture() {
    auto* const button = new UI_PictureButton;
    button->SetImageSupplyFunction(testsupport::ToolkitPicture("QuilloFolder_Sm"));
    return button;
}

Button MakePictureText() {
    auto* const button = new UI_PictureTextButton(UTF8to16("Copy link"));
    button->SetImageSupplyFunction(testsupport::ToolkitPicture("QuilloFolder_Sm"));
    return button;
}

Button MakeLink() {
    return new UI_HotTextButton(UTF8to16("Link"));
}

struct Kind {
    char const* name;
    Button (*make)();
};
constexpr Kind kKinds[] = {{"text", MakeText},
                           {"call to action", MakeCallToAction},
                           {"picture", MakePicture},
                           {"picture and text", MakePictureText},
                           {"link", MakeLink}};

/// The ways to press what `widget` shows.
std::vector<std::function<void(QWidget&)>> Ways() {
    auto const key = [](Qt::Key code) {
        return [code](QWidget& widget) {
            widget.setFocus();
            QTest::keyClick(&widget, code);
        };
    };
    return {[](QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); },
            key(Qt::Key_Return), key(Qt::Key_Enter), key(Qt::Key_Space),
            [](QWidget& widget) {
                auto* const actions =
                    QAccessible::queryAccessibleInterface(&widget)->actionInterface();
                actions->doAction(QAccessibleActionInterface::pressAction());
                testsupport::RunEvents();
            }};
}

TEST(Button, EveryWayToPressItNotifiesOnceUnlessItIsDisabled) {
    for (auto const& kind : kKinds) {
        TestWindow window;
        auto const button = kind.make();
        window.Add(button, {10, 10, 80, 20});
        auto& widget = WidgetOf(*button);
        int pressed = 0;
        button->NotifyWhenChanged([&](ui::Message* message) {
            EXPECT_EQ(static_cast<UI_ControlChangedMessage*>(message)->GetControl(), button.get());
            ++pressed;
        });
        int expected = 0;
        for (auto const& way : Ways()) {
            way(widget);
            EXPECT_EQ(pressed, ++expected) << kind.name;
            button->UI_SetDisabled(true);
            way(widget);
            button->Press();
            button->UI_SetDisabled(false);
            EXPECT_EQ(pressed, expected) << kind.name;
        }
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, {}, true);
        QApplication::sendEvent(&widget, &held);
        QTest::mouseClick(&widget, Qt::RightButton);
        QTest::mousePress(&widget, Qt::LeftButton);
        QTest::mouseRelease(&widget, Qt::LeftButton, {}, QPoint(300, 200));
        EXPECT_EQ(pressed, expected) << kind.name;
        button->Press();
        EXPECT_EQ(pressed, expected + 1) << kind.name;
    }
}

TEST(Button, MayGoWithinItsOwnNotification) {
    for (auto const& kind : kKinds)
        for (auto const& way : Ways()) {
            TestWindow window;
            auto button = kind.make();
            moxcore::utility::RefCountedWeakPtr<UI_Button> const weak(button.get());
            window.Add(button, {10, 10, 80, 20});
            button->NotifyWhenChanged([&](ui::Message*) {
                window.Container().ChildRemoveAll();
                button.reset();
            });
            auto& widget = WidgetOf(*button);
            way(widget);
            EXPECT_EQ(weak.Lock(), nullptr) << kind.name;
        }
}

/// A button's states as a user brings them about.
struct State {
    char const* name;
    std::function<void(TestWindow&, UI_Button&)> enter;
};

TEST(Button, EveryStateLooksDifferentInEveryTheme) {
    State const states[] = {
        {"normal", [](auto&, auto&) {}},
        {"hovered",
         [](auto&, auto& b) {
             QEnterEvent enter({40, 10}, {100, 70}, {100, 70});
             QApplication::sendEvent(&WidgetOf(b), &enter);
         }},
        {"pressed", [](auto&, auto& b) { QTest::mousePress(&WidgetOf(b), Qt::LeftButton); }},
        {"focused", [](auto&, auto& b) { b.UI_SetFocus(); }},
        {"disabled", [](auto&, auto& b) { b.UI_SetDisabled(true); }},
        {"default", [](auto&, auto& b) { b.SetDefaultButton(true); }},
        {"on",
         [](auto&, auto& b) {
             dynamic_cast<UI_FramedButton&>(b).SetSpringLoaded(false);
             b.Press();
             EXPECT_TRUE(dynamic_cast<UI_FramedButton&>(b).IsOn());
         }},
    };
    for (auto const theme :
         {skins::ThemeKind::Light, skins::ThemeKind::HighContrast, skins::ThemeKind::Dark})
        for (auto const& kind : kKinds) {
            skins::ThemeProvider::SetTheme(theme);
            std::vector<std::pair<char const*, QImage>> looks;
            for (auto const& state : states) {
                TestWindow window;
                auto const button = kind.make();
                // Away from where the offscreen pointer rests.
                window.Add(button, {60, 60, 80, 20});
                if (auto* const focused = window.Widget().focusWidget()) focused->clearFocus();
                bool const framed = dynamic_cast<UI_FramedButton*>(button.get());
                bool const bordered = kind.make == MakeText || kind.make == MakePictureText;
                if ((state.name == std::string("on") && !framed) ||
                    (state.name == std::string("default") && !bordered))
                    continue;
                state.enter(window, *button);
                looks.emplace_back(state.name, testsupport::PictureOf(window.Widget()));
            }
            for (std::size_t i = 0; i < looks.size(); ++i)
                for (std::size_t j = 0; j < i; ++j)
                    EXPECT_NE(looks[i].second, looks[j].second)
                        << kind.name << ": " << looks[i].first << " and " << looks[j].first;
        }
}

TEST(Button, IsDrawnInColoursOfItsOwnInAnyTheme) {
    TestWindow window;
    auto const button = MakeCallToAction();
    window.Add(button, {10, 10, 80, 20});
    WidgetOf(*button).clearFocus();
    for (auto const theme : {skins::ThemeKind::Light, skins::ThemeKind::Dark}) {
        skins::ThemeProvider::SetTheme(theme);
        auto const picture = testsupport::PictureOf(window.Widget());
        EXPECT_EQ(picture.pixelColor(15, 20), QColor(38, 127, 235));
        int white = 0;
        for (int x = 10; x < 90; ++x)
            white += picture.pixelColor(x, 20) == QColor(Qt::white);
        EXPECT_GT(white, 4);
    }
}

TEST(Button, WithoutABorderIsSeenAlsoWhenItIsDisabled) {
    TestWindow window;
    auto const button = MakeCallToAction();
    window.Add(button, {10, 10, 80, 20});
    button->UI_SetDisabled(true);
    for (auto const theme : {skins::ThemeKind::Light, skins::ThemeKind::Dark}) {
        skins::ThemeProvider::SetTheme(theme);
        auto const picture = testsupport::PictureOf(window.Widget());
        auto const color =
            skins::ThemeProvider::Get().GetColor(skins::ThemeColor::kControlDisabled);
        EXPECT_EQ(picture.pixelColor(15, 20), QColor::fromRgbF(color.red, color.green, color.blue));
    }
}

TEST(Button, HasABorderInHighContrastWhateverItWasGiven) {
    skins::ThemeProvider::SetTheme(skins::ThemeKind::HighContrast);
    TestWindow window;
    window.Add(MakeCallToAction(), {10, 10, 80, 20});
    EXPECT_GT(qGray(testsupport::PictureOf(window.Widget()).pixel(10, 20)), 200);
    skins::ThemeProvider::SetTheme(skins::ThemeKind::Dark);
}

TEST(Button, ShowsItsTextAsItStandsAndWholeWhereThereIsRoom) {
    TestWindow window;
    for (char const* const text :
         {"Q & A && <b>x</b>", "Sign in to Quillo", "&Cancel", "כניסה", "if"}) {
        for (auto const& button : std::vector<boost::intrusive_ptr<UI_TextButton>>{
                 new UI_TextButton, new UI_PictureTextButton}) {
            button->SetText(UTF8to16(text));
            button->SetFontStyleName("Bold");
            auto const size = button->UI_GetRecommendedSize(nullptr);
            EXPECT_EQ(size.y, 20);
            auto& widget = WidgetOf(*button);
            window.Add(button, {10.5F, 10, size.x, size.y});
            EXPECT_EQ(ToolTipOver(widget), "") << text;
            EXPECT_EQ(QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name),
                      text);
            window.Add(button, {10, 10, 12, size.y});
            EXPECT_NE(ToolTipOver(widget), "") << text;
        }
    }
    auto const copyLink = MakePictureText();
    window.Add(copyLink, {10, 10, 84, 20});
    EXPECT_EQ(ToolTipOver(WidgetOf(*copyLink)), "") << "the room at the sides gives way first";
}

TEST(Button, EnterPressesADialogsDefaultUnlessAnotherButtonHasTheFocus) {
    QDialog dialog;
    dialog.resize(200, 100);
    auto const root = backend::FillWidget(&dialog);
    auto const cancel = MakeText(), commit = MakeCallToAction();
    std::string pressed;
    for (auto const& [button, name] :
         {std::pair(cancel, "cancel "), std::pair(commit, "commit ")}) {
        root->ChildPushBack(button);
        button->UI_SetLocalRectF({10, 10, 80, 20});
        button->UI_Show(true);
        button->NotifyWhenChanged([&pressed, name = name](ui::Message*) { pressed += name; });
    }
    commit->SetDefaultButton(true);
    dialog.show();
    testsupport::RunEvents();
    if (dialog.focusWidget()) dialog.focusWidget()->clearFocus();
    EXPECT_TRUE(commit->IsDefaultButton());
    QTest::keyClick(&dialog, Qt::Key_Return);
    cancel->UI_SetFocus();
    EXPECT_FALSE(commit->IsDefaultButton());
    QTest::keyClick(&WidgetOf(*cancel), Qt::Key_Return);
    EXPECT_EQ(pressed, "commit cancel ");
}

}  // namespace
}  // namespace moxui::controls
