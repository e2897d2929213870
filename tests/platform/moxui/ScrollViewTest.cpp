#include "moxui/controls/UI_ScrollView.h"

#include <gtest/gtest.h>

#include <QTest>
#include <QWheelEvent>

#include "moxui/controls/UI_ControlView.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using testsupport::RunEvents;
using testsupport::TestWindow;
using testsupport::WidgetOf;

constexpr int kRows = 30;
constexpr float kRowStep = 25;

/// A list of rows, 100 units of it to be seen, between two other controls.
class ScrollViewTest : public ::testing::Test {
protected:
    ScrollViewTest() {
        for (auto const& [view, y] : {std::pair(before, 0.0F), std::pair(after, 150.0F)}) {
            view->UI_SetFocusable(true, ui::AccessibleRole::Button);
            window.Add(view, {0, y, 50, 20});
        }
        window.Add(scroll, {0, 40, 300, 100});
        for (int i = 0; i < kRows; ++i) {
            rows.emplace_back(new UI_ControlView);
            rows.back()->UI_SetFocusable(true, ui::AccessibleRole::ListItem);
            scroll->GetContentView()->ChildPushBack(rows.back());
            rows.back()->UI_SetLocalRectF({0, kRowStep * static_cast<float>(i), 200, 20});
            rows.back()->UI_Show(true);
        }
        scroll->SetContentRect({0, 0, 300, kRowStep * kRows});
        RunEvents();
    }

    void Key(Qt::Key key) {
        QTest::keyClick(window.Widget().focusWidget(), key);
        RunEvents();
    }
    int FocusedRow() {
        for (int i = 0; i < kRows; ++i)
            if (rows[static_cast<std::size_t>(i)]->UI_HasFocus()) return i;
        return -1;
    }
    bool IsSeen(int row) {
        auto& widget = WidgetOf(*rows[static_cast<std::size_t>(row)]);
        return widget.visibleRegion().boundingRect() == widget.rect();
    }
    float Scrolled() { return scroll->GetScrollPosition().y; }

    TestWindow window;
    boost::intrusive_ptr<UI_ControlView> before{new UI_ControlView};
    boost::intrusive_ptr<UI_ControlView> after{new UI_ControlView};
    boost::intrusive_ptr<UI_ScrollView> scroll{new UI_ScrollView(UI_ScrollView::kVerticalOnly)};
    std::vector<boost::intrusive_ptr<UI_ControlView>> rows;
};

TEST_F(ScrollViewTest, KeysMoveTheFocusFromRowToRowAndTheRowIsSeen) {
    rows[0]->UI_SetFocus();
    for (auto const& [key, row] : std::vector<std::pair<Qt::Key, int>>{
             {Qt::Key_Up, 0},
             {Qt::Key_Down, 1},
             {Qt::Key_End, kRows - 1},
             {Qt::Key_Down, kRows - 1},
             {Qt::Key_PageUp, kRows - 5},
             {Qt::Key_PageUp, kRows - 9},
             {Qt::Key_PageDown, kRows - 5},
             {Qt::Key_Home, 0},
             {Qt::Key_PageDown, 4},
         }) {
        Key(key);
        EXPECT_EQ(FocusedRow(), row) << key;
        EXPECT_TRUE(IsSeen(row)) << key;
    }
}

TEST_F(ScrollViewTest, TabStopsOnceAtTheRowThatHadTheFocusLast) {
    before->UI_SetFocus();
    Key(Qt::Key_Tab);
    EXPECT_EQ(FocusedRow(), 0);
    Key(Qt::Key_End);
    Key(Qt::Key_Tab);
    EXPECT_TRUE(after->UI_HasFocus());
    Key(Qt::Key_Backtab);
    EXPECT_EQ(FocusedRow(), kRows - 1);
    Key(Qt::Key_Backtab);
    EXPECT_TRUE(before->UI_HasFocus());

    scroll->GetContentView()->ChildRequestRemove(rows.back());
    RunEvents();
    Key(Qt::Key_Tab);
    EXPECT_EQ(FocusedRow(), 0) << "the last one is gone";
}

TEST_F(ScrollViewTest, WithoutRowsTheKeysScroll) {
    scroll->GetContentView()->ChildRemoveAll();
    RunEvents();
    before->UI_SetFocus();
    Key(Qt::Key_Tab);
    ASSERT_TRUE(scroll->UI_HasFocus());
    float const end = kRowStep * kRows - 100;
    Key(Qt::Key_End);
    EXPECT_EQ(Scrolled(), end);
    Key(Qt::Key_PageUp);
    EXPECT_EQ(Scrolled(), end - 100);
    Key(Qt::Key_Down);
    EXPECT_EQ(Scrolled(), end - 80);
    Key(Qt::Key_Home);
    EXPECT_EQ(Scrolled(), 0);
}

TEST_F(ScrollViewTest, TheWheelScrollsAndLeavesTheContentsOwnCoordinatesAlone) {
    auto& viewport = *WidgetOf(*scroll->GetContentView()).parentWidget();
    QWheelEvent wheel({5, 5}, {5, 5}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&viewport, &wheel);
    EXPECT_GT(Scrolled(), 0);
    EXPECT_EQ(scroll->GetContentView()->UI_GetLocalRectF(true).y, 0);
    EXPECT_EQ(rows[3]->UI_LocalToGlobalF({0, 0, 1, 1}).y,
              rows[0]->UI_LocalToGlobalF({0, 0, 1, 1}).y + 3 * kRowStep);
}

TEST_F(ScrollViewTest, StaysWhereItIsScrolledWhenItsContentGrowsAndComesBackWhenItShrinks) {
    scroll->SetScrollPosition({0, 300});
    auto const top = WidgetOf(*rows[12]).mapTo(&window.Widget(), QPoint()).y();
    scroll->SetContentRect({0, 0, 300, 2000});
    EXPECT_EQ(Scrolled(), 300);
    EXPECT_EQ(WidgetOf(*rows[12]).mapTo(&window.Widget(), QPoint()).y(), top);
    scroll->SetContentRect({0, 0, 300, 150});
    EXPECT_EQ(Scrolled(), 50);
    scroll->SetScrollPosition({0, 9999});
    EXPECT_EQ(Scrolled(), 50);
}

TEST_F(ScrollViewTest, ItsContentKnowsItsWayUpAndMayOutliveIt) {
    auto const content = scroll->GetContentView();
    EXPECT_EQ(content->UI_GetParentNode(), scroll);
    EXPECT_NE(rows[0]->UI_GetDrawSupplier(), nullptr);
    window.Container().ChildRequestRemove(scroll);
    scroll.reset();
    RunEvents();
    EXPECT_EQ(content->UI_GetParentNode(), nullptr);
    window.Add(content, {0, 0, 300, 100});
    EXPECT_TRUE(WidgetOf(*rows[0]).isVisible());
}

}  // namespace
}  // namespace moxui::controls
