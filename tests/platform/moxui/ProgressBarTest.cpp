#include "moxui/controls/UI_ProgressBar.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <algorithm>
#include <climits>

#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using testsupport::WidgetOf;

/// How many pixels along the middle of `bar` are in the colour of what is done.
int DoneWidth(UI_ProgressBar const& bar) {
    auto const picture = testsupport::PictureOf(WidgetOf(bar));
    auto const done = bar.GetColor(skins::ThemeColor::kProgress);
    auto const color = QColor::fromRgbF(done.red, done.green, done.blue).rgb();
    int width = 0;
    for (int x = 0; x < picture.width(); ++x)
        width += picture.pixel(x, picture.height() / 2) == color;
    return width;
}

TEST(ProgressBar, ShowsItsPartOfTheWholeToEyesAndAssistiveTools) {
    testsupport::TestWindow window;
    boost::intrusive_ptr<UI_ProgressBar> const bar(new UI_ProgressBar);
    window.Add(bar, {15, 103, 310, 12});
    EXPECT_EQ(DoneWidth(*bar), 0);
    struct Case {
        unsigned value, maximum;
        double part;
    };
    for (auto const& [value, maximum, part] : std::vector<Case>{{456, 1000, 0.456},
                                                                {1000, 1000, 1},
                                                                {2, 4, 0.5},
                                                                {1, 4, 0.25},
                                                                {1200, 1000, 1},
                                                                {0, 1000, 0},
                                                                {5, 0, 0},
                                                                {UINT_MAX, UINT_MAX, 1},
                                                                {UINT_MAX / 2, UINT_MAX, 0.5}}) {
        bar->SetProgress(value, maximum);
        EXPECT_EQ(bar->GetValue(), value);
        EXPECT_NEAR(DoneWidth(*bar), part * 308, 2) << value << " of " << maximum;
        auto* const told = QAccessible::queryAccessibleInterface(&WidgetOf(*bar))->valueInterface();
        // In percent, rounded down.
        EXPECT_EQ(told->minimumValue(), 0);
        EXPECT_EQ(told->maximumValue(), 100);
        EXPECT_EQ(told->currentValue().toInt(),
                  maximum > 0 ? 100LL * std::min(value, maximum) / maximum : 0);
    }
    WidgetOf(*bar).setLayoutDirection(Qt::RightToLeft);
    bar->SetProgress(1, 2);
    auto const picture = testsupport::PictureOf(WidgetOf(*bar));
    EXPECT_NE(picture.pixel(20, 6), picture.pixel(290, 6));
    EXPECT_NEAR(DoneWidth(*bar), 154, 2);
}

}  // namespace
}  // namespace moxui::controls
