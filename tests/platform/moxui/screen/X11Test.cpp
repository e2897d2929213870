#include <QDialog>

#include "platform/moxui/screen/RealInput.h"

namespace moxui {
namespace {

/// The window above which the server's clients keep `window`; 0 for none.
unsigned long long TransientFor(QWidget const& window) {
    auto const told = Run("xprop", {"-id", QString::number(window.winId()), "WM_TRANSIENT_FOR"});
    return told.mid(told.lastIndexOf(' ') + 1).trimmed().toULongLong(nullptr, 0);
}

TEST_F(RealInput, GoesOverToTheWindowOfAnotherAnchorWhileItIsShown) {
    QWidget other;
    other.setGeometry(200, 350, 400, 200);
    QPushButton otherField(&other);
    other.show();
    otherField.setFocus();
    auto const otherAnchor = backend::WrapWidget(&other);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));

    OpenByClick();
    menu->UI_SetFocus();
    ASSERT_EQ(TransientFor(WidgetOf(*popup)), host.winId());
    popup->SetAnchor(otherAnchor);
    EXPECT_TRUE(Until([&] { return TransientFor(WidgetOf(*popup)) == other.winId(); }));
    EXPECT_TRUE(Until([&] { return WidgetOf(*menu).hasFocus(); }));
    EXPECT_EQ(WidgetOf(*popup).geometry().topRight() - other.geometry().bottomRight(),
              QPoint(-1, 5))
        << "as Open asks for it";

    host.hide();
    testsupport::RunEvents();
    EXPECT_TRUE(IsOpen());
    EXPECT_TRUE(Until([&] { return WidgetOf(*menu).hasFocus(); }));
    Xdotool({"key", "Escape"});
    EXPECT_TRUE(Until([&] { return !IsOpen() && otherField.hasFocus(); }));
    popup->StartPopup();
    other.close();
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(commits, 2);
}

TEST_F(RealInput, StaysWhileAnotherProgramHasTheFocusUntilAClickDoesSomethingHere) {
    QProcess other;
    other.start(QUILLO_GALLERY_PROGRAM, {});
    QDialog question(&host);
    question.setModal(true);
    QObject::connect(&outside, &QPushButton::clicked, [&] { question.open(); });
    OpenByClick();
    auto const goAway = [this] {
        Xdotool({"search", "--sync", "--onlyvisible", "--name", "^Gallery$", "windowfocus"});
        ASSERT_TRUE(
            Until([] { return QGuiApplication::applicationState() != Qt::ApplicationActive; }));
        EXPECT_TRUE(IsOpen());
        host.raise();  // the other program's window lies above it
    };
    goAway();
    Click(host.mapToGlobal(QPoint(20, 200)));
    EXPECT_TRUE(Until([&] { return WidgetOf(*popup).isActiveWindow(); }));
    goAway();
    Click(button);
    EXPECT_TRUE(Until([&] { return WidgetOf(*popup).isActiveWindow(); }));
    EXPECT_TRUE(IsOpen()) << "the click only brings the user back";
    EXPECT_EQ(commits, 0);

    goAway();
    Click(outside);
    EXPECT_TRUE(Until([&] { return !IsOpen() && question.isActiveWindow(); }));
    EXPECT_EQ(clicksOutside, 1);
    Xdotool({"key", "Escape"});
    EXPECT_TRUE(Until([&] { return !question.isVisible(); }));
    EXPECT_EQ(commits, 1);
    other.kill();
    EXPECT_TRUE(Until([&] { return other.state() == QProcess::NotRunning; }));
}

}  // namespace
}  // namespace moxui
