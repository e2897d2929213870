#include <QApplication>
#include <QTest>
#include <cstdlib>

#include "moxui/controls/UI_ControlView.h"
#include "moxui/controls/UI_StaticImage.h"
#include "moxui/drawbot/Drawbot.h"
#include "platform/moxui/TouchPopupTest.h"
#include "support/Seen.h"

// A layout from right to left shows the mirror image of what the views have counted from the left.

namespace moxui::controls {
namespace {

using Rect = moxcore::geom::RectT<float>;

/// The application's layout from right to left, as long as it lives.
struct RightToLeft {
    RightToLeft() { QGuiApplication::setLayoutDirection(Qt::RightToLeft); }
    ~RightToLeft() { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }
};

/// A view that draws a bar at its left edge and takes presses.
class Bar : public UI_ControlView {
public:
    void UI_Draw(drawbot::Drawbot* drawbot) const override {
        drawbot->GetSurface()->PaintRect({1, 0, 0, 1}, {0, 0, 5, 20});
    }
    bool UI_DoPointerEvent(ui::UI_Node*, ui::PointerEvent const& event) override {
        pressedAt = event.GetLocation();
        return true;
    }
    moxcore::geom::PointT<float> pressedAt;
};

QRect PlaceOf(ui::UI_Node const& node, QWidget const& window) {
    return {WidgetOf(node).mapTo(&window, QPoint()), WidgetOf(node).size()};
}

TEST(RightToLeftLayout, MirrorsEachPlaceWithinItsParentHoweverItHasComeThere) {
    boost::intrusive_ptr<ui::UI_SubView> const outer(new ui::UI_SubView), late(new ui::UI_SubView);
    boost::intrusive_ptr<Bar> const bar(new Bar);
    auto const fill = [&](testsupport::TestWindow& window) {
        outer->ChildPushBack(bar);
        bar->UI_Show(true);
        bar->UI_SetLocalRectF({10, 30, 50, 20});  // before its parent has a size
        window.Add(outer, {20, 10, 200, 100});
        outer->ChildPushBack(late);
        late->UI_Show(true);
        late->UI_SetLocalRectF({100, 60, 40, 20});
    };
    auto const expectMirrored = [&](QWidget const& window, int outerWidth) {
        int const left = 400 - 20 - outerWidth;
        EXPECT_EQ(PlaceOf(*outer, window), QRect(left, 10, outerWidth, 100));
        EXPECT_EQ(PlaceOf(*bar, window), QRect(left + outerWidth - 60, 40, 50, 20));
        EXPECT_EQ(PlaceOf(*late, window), QRect(left + outerWidth - 140, 70, 40, 20));
        EXPECT_EQ(bar->UI_GetLocalRectF(true), (Rect{10, 30, 50, 20})) << "as the views count";
    };
    {
        testsupport::TestWindow window;
        fill(window);
        RightToLeft const mirrored;
        expectMirrored(window.Widget(), 200);
    }
    RightToLeft const mirrored;
    testsupport::TestWindow window;
    fill(window);
    expectMirrored(window.Widget(), 200);
    outer->UI_SetLocalRectF({20, 10, 300, 100});
    expectMirrored(window.Widget(), 300);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_EQ(PlaceOf(*bar, window.Widget()), QRect(30, 40, 50, 20));
}

TEST(RightToLeftLayout, ConvertsPressesScreenPlacesAndDrawingsBothWays) {
    RightToLeft const mirrored;
    testsupport::TestWindow window;
    boost::intrusive_ptr<Bar> const bar(new Bar);
    window.Add(bar, {10, 30, 50, 20});
    auto& widget = WidgetOf(*bar);
    EXPECT_EQ(testsupport::PictureOf(widget).pixelColor(47, 10), QColor(Qt::red));
    EXPECT_NE(testsupport::PictureOf(widget).pixelColor(2, 10), QColor(Qt::red));
    QTest::mousePress(&widget, Qt::LeftButton, {}, QPoint(48, 5));
    EXPECT_EQ(bar->pressedAt, (moxcore::geom::PointT<float>{2, 5}));
    auto const onScreen = bar->UI_LocalToGlobalF({0, 0, 5, 20});
    EXPECT_EQ(onScreen.x, static_cast<float>(widget.mapToGlobal(QPoint(45, 0)).x()));
}

/// Whether the pictures are the same but for how lines between two pixels are drawn.
bool AreAlike(QImage const& a, QImage const& b) {
    if (a.size() != b.size()) return false;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 16) return false;
    return true;
}

TEST(RightToLeftLayout, TurnsPicturesThatPointInTheDirectionOfReadingAndNoOthers) {
    for (auto const& [name, isTurned] :
         {std::pair("S_ChevronRight_18", true), std::pair("QuilloFolder_Sm", false)}) {
        SCOPED_TRACE(name);
        testsupport::TestWindow window;
        boost::intrusive_ptr<UI_StaticImage> const image(new UI_StaticImage);
        image->SetImageSupplyFunction(testsupport::ToolkitPicture(name));
        window.Add(image, {10, 10, 5, 18});
        auto const before = testsupport::PictureOf(WidgetOf(*image));
        RightToLeft const mirrored;
        auto const after = testsupport::PictureOf(WidgetOf(*image));
        EXPECT_TRUE(AreAlike(after, isTurned ? before.mirrored(true, false) : before));
        EXPECT_NE(AreAlike(after, before), isTurned) << "the other picture would do as well";
        EXPECT_EQ(PlaceOf(*image, window.Widget()).right(), 400 - 1 - 10) << "it reaches leftward";
    }
}

TEST_F(TouchPopup, HangsFromTheOtherEdgeWhereTheLayoutGoesFromRightToLeft) {
    RightToLeft const mirrored;
    Open();  // its right edge in line with the anchor's
    auto const isInLine = [this] {
        auto const corner = button.mapToGlobal(QPoint(0, button.height()));
        return WidgetOf(*popup).geometry().topLeft() == corner + QPoint(0, 4);
    };
    EXPECT_TRUE(isInLine());
    EXPECT_GT(WidgetOf(*buttons[0]).x(), WidgetOf(*buttons[1]).x());
    host.move(host.x() - 30, host.y() + 40);
    button.setGeometry(380, 10, 90, 20);
    RunEvents();
    EXPECT_TRUE(isInLine());

    QTest::keyClick(&WidgetOf(*popup), Qt::Key_Tab);
    EXPECT_TRUE(buttons[0]->UI_HasFocus()) << "Tab goes as one reads";
}

}  // namespace
}  // namespace moxui::controls
