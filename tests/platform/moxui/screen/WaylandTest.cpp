#include "moxui/controls/UI_ControlView.h"
#include "moxui/drawbot/Drawbot.h"
#include "platform/moxui/screen/RealInput.h"

namespace moxui {
namespace {

/// Fills its place with a colour that nothing else has.
class Mark : public controls::UI_ControlView {
public:
    void UI_Draw(drawbot::Drawbot* drawbot) const override {
        drawbot->GetSurface()->PaintRect({1, 0, 1, 1}, UI_GetLocalRectF(false));
    }
};

/// Where on the screen `color` is seen.
QRect Seen(QColor const& color) {
    auto const screen = Screen();
    QRect seen;
    for (int y = 0; y < screen.height(); ++y)
        for (int x = 0; x < screen.width(); ++x)
            if (screen.pixelColor(x, y) == color) seen |= QRect(x, y, 1, 1);
    return seen;
}

TEST_F(RealInput, HangsFromItsButtonOnTheScreenAndFollowsIt) {
    boost::intrusive_ptr<Mark> const mark(new Mark);
    popup->GetContainer()->ChildInsert(0, mark);
    mark->UI_SetLocalRectF({0, 0, 200, 120});
    mark->UI_Show(true);
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::cyan);
    host.setPalette(palette);
    auto const isInPlace = [this] {
        auto const place = Seen(Qt::magenta);
        auto const corner = Seen(Qt::cyan).topLeft();
        return place ==
               QRect(corner + button.geometry().bottomRight() + QPoint(-200, 5), QSize(200, 120));
    };
    OpenByClick();
    EXPECT_TRUE(Until(isInPlace));
    button.move(300, 200);
    EXPECT_TRUE(Until(isInPlace)) << "its button has moved";
    EXPECT_TRUE(WidgetOf(*popup).isActiveWindow());

    host.setWindowFlag(Qt::FramelessWindowHint);
    EXPECT_EQ(commits, 1) << "which hides the window, and with it the popup";
    host.showNormal();
    Open();
    EXPECT_TRUE(Until(isInPlace)) << "the window has another place, which nobody knows";
    host.resize(host.width() - 100, host.height() - 50);
    button.move(host.width() - 110, 20);
    EXPECT_TRUE(Until(isInPlace)) << "the window has another size";
    EXPECT_EQ(commits, 1);
}

TEST_F(RealInput, StaysWhileAnotherProgramHasTheFocusAndHasItAgainAfterwards) {
    OpenByClick();
    QProcess other;
    other.start(QUILLO_GALLERY_PROGRAM, {});
    ASSERT_TRUE(Until([] { return QGuiApplication::applicationState() != Qt::ApplicationActive; }));
    EXPECT_TRUE(IsOpen());
    other.kill();
    EXPECT_TRUE(Until([&] { return WidgetOf(*popup).isActiveWindow(); }));
    EXPECT_EQ(commits, 0);
    Xdotool({"key", "Escape"});
    EXPECT_TRUE(Until([&] { return !IsOpen() && field.hasFocus(); }));
    EXPECT_TRUE(Until([&] { return other.state() == QProcess::NotRunning; }));
}

}  // namespace
}  // namespace moxui
