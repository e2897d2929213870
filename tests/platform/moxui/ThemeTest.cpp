#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "moxui/controls/UI_ControlView.h"
#include "moxui/skins/ThemeProvider.h"
#include "support/TestWindow.h"

namespace moxui::skins {
namespace {

namespace Key = ThemeColor;

/// The relative luminance of a colour, as accessibility guidelines define it.
double Luminance(drawbot::ColorRGBA const& color) {
    auto const linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double Contrast(drawbot::ColorRGBA const& a, drawbot::ColorRGBA const& b) {
    double const lighter = std::max(Luminance(a), Luminance(b));
    double const darker = std::min(Luminance(a), Luminance(b));
    return (lighter + 0.05) / (darker + 0.05);
}

class ThemeTest : public ::testing::Test {
protected:
    ~ThemeTest() override { ThemeProvider::SetTheme(ThemeKind::Dark); }
};

TEST_F(ThemeTest, EveryTextStandsOutFromItsGround) {
    auto const& theme = ThemeProvider::Get();
    for (auto const kind : {ThemeKind::Dark, ThemeKind::Light}) {
        ThemeProvider::SetTheme(kind);
        auto const header = utilities::Blend(theme.GetGray(HalcynGrayColor::Level0),
                                             theme.GetGray(HalcynGrayColor::Level1), 0.4F);
        struct Pair {
            char const* what;
            drawbot::ColorRGBA text;
            drawbot::ColorRGBA ground;
        };
        auto const panel = theme.GetGray(HalcynGrayColor::Level0);
        auto const color = [&](int key) { return theme.GetColor(key); };
        for (auto const& [what, text, ground] : std::vector<Pair>{
                 {"text on the popup", color(Key::kText), color(Key::kGround)},
                 {"text on a section's header", color(Key::kText), header},
                 {"text on a panel", color(Key::kText), panel},
                 {"disabled text on the popup", color(Key::kDisabledText), color(Key::kGround)},
                 {"a disabled button's label", color(Key::kDisabledText), color(Key::kControl)},
                 {"a link on the popup", color(Key::kLink), color(Key::kGround)},
                 {"a row's text", color(Key::kText), color(Key::kHighlight)},
                 {"a chosen row's text", color(Key::kSelectedText), color(Key::kHighlight)},
                 {"a button's label", color(Key::kButtonText), color(Key::kButtonGround)},
                 {"a button's label, hovered", color(Key::kButtonText), color(Key::kButtonHovered)},
                 {"a button's label, pressed", color(Key::kText), color(Key::kControlPressed)},
             })
            EXPECT_GE(Contrast(text, ground), 4.5)
                << what << (kind == ThemeKind::Dark ? ", dark" : ", light");
    }
}

TEST_F(ThemeTest, EveryControlCanBeToldFromItsGround) {
    auto const& theme = ThemeProvider::Get();
    for (auto const kind : {ThemeKind::Dark, ThemeKind::Light}) {
        ThemeProvider::SetTheme(kind);
        for (int const key : {Key::kFocus, Key::kControlBorder, Key::kProgress, Key::kIcon})
            EXPECT_GE(Contrast(theme.GetColor(key), theme.GetColor(Key::kGround)), 3.0) << key;
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

TEST_F(ThemeTest, AColourOfAClientsOwnIsItsAlone) {
    boost::intrusive_ptr<Listening> const own(new Listening);
    boost::intrusive_ptr<Listening> const other(new Listening);
    drawbot::ColorRGBA const blue{0, 0, 1, 1};
    own->SetCustomThemeColor(Key::kText, {1, 0, 0, 1});
    own->SetCustomThemeColor(Key::kText, blue);
    EXPECT_EQ(own->GetColor(Key::kText), blue);
    EXPECT_NE(other->GetColor(Key::kText), blue);
}

}  // namespace
}  // namespace moxui::skins
