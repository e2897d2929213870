#include <gtest/gtest.h>

#include <QApplication>
#include <QToolTip>
#include <utility>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/skins/ThemeProvider.h"
#include "support/Contrast.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::skins {
namespace {

namespace Key = ThemeColor;

class ThemeTest : public ::testing::Test {
protected:
    ~ThemeTest() override { ThemeProvider::SetTheme(ThemeKind::Dark); }
};

TEST_F(ThemeTest, EveryTextStandsOutFromItsGround) {
    auto const& theme = ThemeProvider::Get();
    auto const color = [&](int key) { return theme.GetColor(key); };
    // `over`, which may be translucent, laid on `ground`.
    auto const laid = [](drawbot::ColorRGBA over, drawbot::ColorRGBA const& ground) {
        auto const part = std::exchange(over.alpha, 1.0F);
        return utilities::Blend(ground, over, part);
    };
    for (auto const kind : {ThemeKind::Dark, ThemeKind::Light, ThemeKind::HighContrast}) {
        ThemeProvider::SetTheme(kind);
        auto const panel = theme.GetGray(HalcynGrayColor::Level0);
        auto const header = utilities::Blend(panel, theme.GetGray(HalcynGrayColor::Level1), 0.4F);
        struct Pair {
            char const* what;
            drawbot::ColorRGBA text;
            drawbot::ColorRGBA ground;
        };
        for (auto const& [what, text, ground] : std::vector<Pair>{
                 {"text on the popup", color(Key::kText), color(Key::kGround)},
                 {"text on a section's header", color(Key::kText), header},
                 {"text on a panel", color(Key::kText), panel},
                 {"a notice or a tooltip", color(Key::kText), color(Key::kControl)},
                 {"a link", color(Key::kLink), color(Key::kGround)},
                 {"a menu's heading", color(Key::kDisabledText), color(Key::kGround)},
                 {"a disabled button", color(Key::kDisabledText), color(Key::kControlDisabled)},
                 {"a chosen row", color(Key::kText), color(Key::kHighlight)},
                 {"a menu's highlighted entry", color(Key::kSelectedText), color(Key::kHighlight)},
                 {"a button", color(Key::kButtonText), color(Key::kButtonGround)},
                 {"a button, hovered", color(Key::kButtonText), color(Key::kButtonHovered)},
                 {"a button, pressed", color(Key::kButtonText),
                  laid(color(Key::kShade), color(Key::kButtonHovered))},
                 {"an open menu's button", color(Key::kButtonText), color(Key::kControlPressed)},
             })
            EXPECT_GE(testsupport::Contrast(text, ground),
                      kind == ThemeKind::HighContrast ? 7 : 4.5)
                << what << ' ' << static_cast<int>(kind);
    }
}

TEST_F(ThemeTest, EveryControlCanBeToldFromItsGround) {
    auto const& theme = ThemeProvider::Get();
    for (auto const kind : {ThemeKind::Dark, ThemeKind::Light, ThemeKind::HighContrast}) {
        ThemeProvider::SetTheme(kind);
        auto const contrast = [&](int key) {
            return testsupport::Contrast(theme.GetColor(key), theme.GetColor(Key::kGround));
        };
        for (int const key : {Key::kFocus, Key::kControlBorder, Key::kProgress, Key::kIcon})
            EXPECT_GE(contrast(key), kind == ThemeKind::HighContrast ? 4.5 : 3.0) << key;
        // A disabled button may have no border.
        EXPECT_GE(contrast(Key::kControlDisabled), 1.15);
    }
}

class Listening : public controls::UI_ControlView {
public:
    void UI_ThemeChanged() override { heard = GetColor(Key::kText); }
    drawbot::ColorRGBA heard;
};

TEST_F(ThemeTest, ViewsHearOfAnotherThemeAlsoWhenTheyComeIntoAWindowLater) {
    testsupport::TestWindow window;
    boost::intrusive_ptr<Listening> const inside(new Listening);
    boost::intrusive_ptr<Listening> const outside(new Listening);
    window.Add(inside, {0, 0, 10, 10});

    ThemeProvider::SetTheme(ThemeKind::Light);
    auto const text = ThemeProvider::Get().GetColor(Key::kText);
    EXPECT_EQ(inside->heard, text);
    EXPECT_NE(outside->heard, text);
    window.Add(outside, {0, 0, 10, 10});
    EXPECT_EQ(outside->heard, text);
}

TEST_F(ThemeTest, ATooltipIsInTheThemesColoursAndNotInTheApplications) {
    testsupport::TestWindow window;
    auto const text = moxcore::string::AsciiToUTF16("A name that is too long for its place");
    boost::intrusive_ptr<controls::UI_StaticText> const elided(new controls::UI_StaticText(text));
    boost::intrusive_ptr<controls::UI_StaticText> const given(new controls::UI_StaticText);
    given->UI_SetToolTip(text, 400);
    window.Add(elided, {0, 0, 50, 20});
    window.Add(given, {0, 30, 50, 20});
    for (auto const kind : {ThemeKind::Light, ThemeKind::Dark}) {
        ThemeProvider::SetTheme(kind);
        auto const ground = ThemeProvider::Get().GetColor(Key::kControl);
        for (auto const& view : {elided, given}) {
            EXPECT_NE(testsupport::ToolTipOver(testsupport::WidgetOf(*view)), "");
            int shown = 0;
            for (auto* const tip : QApplication::topLevelWidgets()) {
                if (!tip->isVisible() || tip->windowType() != Qt::ToolTip) continue;
                ++shown;
                EXPECT_EQ(testsupport::PictureOf(*tip).pixelColor(2, 2),
                          QColor::fromRgbF(ground.red, ground.green, ground.blue));
            }
            EXPECT_EQ(shown, 1);
        }
    }
    QToolTip::hideText();
}

TEST_F(ThemeTest, AColourOfAClientsOwnIsItsAlone) {
    boost::intrusive_ptr<Listening> const own(new Listening);
    boost::intrusive_ptr<Listening> const other(new Listening);
    drawbot::ColorRGBA const blue{0, 0, 1, 1};
    own->SetCustomThemeColor(Key::kText, {1, 0, 0, 1});
    own->SetCustomThemeColor(Key::kText, blue);
    EXPECT_EQ(own->GetColor(Key::kText), blue);
    EXPECT_NE(other->GetColor(Key::kText), blue);
    ThemeProvider::SetTheme(ThemeKind::HighContrast);
    EXPECT_EQ(own->GetColor(Key::kText), other->GetColor(Key::kText)) << "none there";
}

}  // namespace
}  // namespace moxui::skins
