#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QTest>
#include <QToolTip>

#include "moxcore/threads/MainThread.h"
#include "moxui/skins/ThemeProvider.h"
#include "platform/moxui/TouchPopupTest.h"

namespace moxui::controls {
namespace {

TEST_F(TouchPopup, IsShownWhereItWasAskedForAndMovesAlong) {
    Open();
    auto const content = [&] { return popup->GetContainer()->UI_LocalToGlobalF({0, 0, 200, 120}); };
    EXPECT_EQ(content(), (moxcore::geom::RectT<float>{460, 134, 200, 120}));
    EXPECT_EQ(WidgetOf(*popup).frameGeometry(), QRect(460, 134, 200, 120));

    host.move(host.x() + 30, host.y() + 40);
    RunEvents();
    EXPECT_EQ(content(), (moxcore::geom::RectT<float>{490, 174, 200, 120}));

    auto const screen = QGuiApplication::primaryScreen()->availableGeometry();
    host.move(screen.right() - 500, screen.bottom() - 60);
    RunEvents();
    EXPECT_TRUE(screen.contains(WidgetOf(*popup).frameGeometry()));
    EXPECT_LT(content().y, static_cast<float>(host.y()));
    EXPECT_EQ(commits, 0);
}

/// The keyboard's focus survives new content, whatever Qt does with it while the old one goes.
TEST_F(TouchPopup, KeepsTheFocusOnAControlThatIsMadeAnew) {
    Open();
    struct Case {
        std::vector<char const*> before;
        std::size_t focused;
        std::vector<char const*> anew;
        std::size_t expected;
    };
    for (auto const& [before, focused, anew, expected] :
         std::vector<Case>{{{"Share"}, 0, {"More", "Share"}, 1},
                           {{"Share"}, 0, {"Share", "More", "Copy"}, 0},
                           {{"Share"}, 0, {"More", "Copy"}, 0},
                           {{"More", "Share"}, 1, {"More", "Share"}, 1}}) {
        SCOPED_TRACE(testing::PrintToString(before) + " " + testing::PrintToString(anew));
        auto const fill = [this](std::vector<char const*> const& texts) {
            while (popup->GetContainer()->ChildCount())
                popup->GetContainer()->ChildRequestRemove(*popup->GetContainer()->ChildBegin());
            boost::intrusive_ptr<ui::UI_SubView> const view(new ui::UI_SubView);
            popup->GetContainer()->ChildPushBack(view);
            view->UI_SetLocalRectF({0, 0, 200, 120});
            view->UI_Show(true);
            buttons.clear();
            for (auto const* const text : texts)
                buttons.push_back(Add(*view, 10 + 60 * static_cast<float>(buttons.size()), text));
            popup->StartPopup();
            RunEvents();
        };
        fill(before);
        buttons[focused]->UI_SetFocus();
        ASSERT_TRUE(WidgetOf(*buttons[focused]).hasFocus());
        fill(anew);
        EXPECT_TRUE(WidgetOf(*buttons[expected]).hasFocus());
    }
}

TEST_F(TouchPopup, TheUserDismissesItInEachOfTheseWays) {
    struct Case {
        char const* what;
        std::function<void()> act;
        bool dismissed;
    };
    QWidget otherWindow;
    otherWindow.show();
    QMenu hostsMenu(&host);
    for (auto const& [what, act, dismissed] : std::vector<Case>{
             {"Escape", [&] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); },
              true},
             {"a click elsewhere in the window", [&] { QTest::mouseClick(&host, Qt::LeftButton); },
              true},
             {"a click into another window",
              [&] { QTest::mouseClick(&otherWindow, Qt::RightButton); }, true},
             {"its close box", [&] { WidgetOf(*popup).close(); }, true},
             {"its anchor is hidden", [&] { button.hide(); }, true},
             {"its window is closed", [&] { host.close(); }, true},
             {"a click inside", [&] { QTest::mouseClick(&WidgetOf(*popup), Qt::LeftButton); },
              false},
             {"another key", [&] { QTest::keyClick(&WidgetOf(*popup), Qt::Key_A); }, false},
         }) {
        commits = 0;
        host.show();
        button.show();
        RunEvents();
        Open();
        ASSERT_TRUE(IsOpen()) << what;
        act();
        EXPECT_EQ(IsOpen(), !dismissed) << what;
        EXPECT_EQ(commits, dismissed) << what;
        act();
        RunEvents();
        EXPECT_EQ(commits, dismissed) << what;
    }
}

TEST_F(TouchPopup, HiddenByTheProgramItTellsNobody) {
    Open();
    popup->UI_Show(false);
    EXPECT_FALSE(IsOpen());
    popup->UI_Show(true);
    RunEvents();
    EXPECT_TRUE(IsOpen());
    popup->GetContainer()->ChildRemoveAll();
    auto const container = popup->GetContainer();
    popup->ChildRequestRemove(container);
    EXPECT_EQ(popup->GetContainer(), nullptr);
    popup->SetContentSize({0, 0, 10, 10});
    popup.reset();
    RunEvents();
    EXPECT_EQ(commits, 0);
    EXPECT_TRUE(field.hasFocus());
}

TEST_F(TouchPopup, AClickOnItsAnchorOnlyDismissesIt) {
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, [&] { ++clicks; });
    Open();
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(clicks, 0);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
}

TEST_F(TouchPopup, WhoComesByKeyboardFindsTheFirstControlFocused) {
    QTest::mouseClick(&field, Qt::LeftButton);
    Open();
    EXPECT_TRUE(WidgetOf(*popup).isActiveWindow());
    EXPECT_FALSE(buttons[0]->UI_HasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(buttons[0]->UI_HasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    RunEvents();
    EXPECT_TRUE(field.hasFocus());

    QTest::keyClick(&field, Qt::Key_Down);
    popup->StartPopup();
    RunEvents();
    buttons[0]->UI_SetFocus();
    popup->GetContainer()->ChildRequestRemove(buttons[0]);
    popup->StartPopup();  // another step's view
    RunEvents();
    EXPECT_TRUE(buttons[1]->UI_HasFocus() || buttons[2]->UI_HasFocus());
}

/// A click may open it before the window system has told that the host has the focus.
TEST_F(TouchPopup, GivesTheFocusToItsAnchorsWindowWhereNoneHadItOrThatIsGone) {
    for (bool const gone : {false, true}) {
        QWidget other;
        other.show();
        other.activateWindow();
        RunEvents();
        if (!gone) other.close();
        ASSERT_EQ(QApplication::activeWindow(), gone ? &other : nullptr);
        Open();
        ASSERT_TRUE(WidgetOf(*popup).isActiveWindow());
        other.close();
        QTest::keyClick(&WidgetOf(*popup), Qt::Key_Escape);
        RunEvents();
        EXPECT_TRUE(field.hasFocus()) << gone;
    }
}

TEST_F(TouchPopup, WhatBelongsToItDoesNotDismissIt) {
    Open();
    auto& window = WidgetOf(*popup);
    QMenu menu(&WidgetOf(*buttons[0]));
    menu.addAction("entry");
    popup->SetPopupMenuShowing(true);
    menu.popup(window.mapToGlobal(QPoint(20, 40)));
    RunEvents();
    // A real press outside: Qt closes the menu and presses once more what lies there.
    auto* const hosts = host.windowHandle();
    QTest::mousePress(hosts, Qt::LeftButton, Qt::NoModifier, QPoint(5, 250));
    QTest::mouseRelease(hosts, Qt::LeftButton, Qt::NoModifier, QPoint(5, 250));
    RunEvents();
    EXPECT_FALSE(menu.isVisible());
    popup->SetPopupMenuShowing(false);
    EXPECT_TRUE(IsOpen());

    QDialog own(&window), question(&host);
    own.show();
    RunEvents();
    QTest::mouseClick(&own, Qt::LeftButton);
    EXPECT_TRUE(IsOpen());
    own.close();
    question.setModal(true);  // a question that the host has to ask
    question.show();
    RunEvents();
    QTest::mouseClick(&question, Qt::LeftButton);
    EXPECT_TRUE(IsOpen());
    question.close();
    QTest::mouseClick(hosts, Qt::LeftButton, Qt::NoModifier, QPoint(5, 250));
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(commits, 1);
}

/// A widget of the host's that handles what is pressed in it; as a window, without a child that
/// does.
class Canvas : public QWidget {
public:
    std::function<void()> onPress, onRelease;

protected:
    void mousePressEvent(QMouseEvent*) override {
        if (onPress) onPress();
    }
    void mouseReleaseEvent(QMouseEvent*) override {
        if (onRelease) onRelease();
    }
};

TEST_F(TouchPopup, TheClickThatBringsTheUserBackDismissesItWhereItDoesSomething) {
    QLabel label("empty", &host);
    QDialog dialog(&host), modeless(&host);
    dialog.setModal(true);
    QMenu hostsMenu(&host);
    Canvas canvas, inner;
    inner.setParent(&host);
    QObject::connect(&field, &QPushButton::clicked, [&] { dialog.open(); });
    struct Case {
        char const* what;
        QWidget* clicked;
        bool dismissed;
        std::function<void()> onPress, onRelease;  // of what handles it
        QWidget* active;  // after it; null: Qt tells of none while a menu is open
    };
    auto* const own = &WidgetOf(*popup);
    QDialog ofPopup(own);
    for (auto const& [what, clicked, dismissed, onPress, onRelease, active] : std::vector<Case>{
             {"the popup", own, false, {}, {}, own},
             {"an empty place", &host, false, {}, {}, own},
             {"a label", &label, false, {}, {}, own},
             {"its anchor", &button, false, {}, {}, own},
             {"a button", &field, true, {}, {}, &dialog},
             {"what handles it", &inner, true, [&] { own->activateWindow(); }, {}, &host},
             {"a window that does nothing", &canvas, false, {}, {}, own},
             {"a menu opens", &canvas, true, [&] { hostsMenu.popup({}); }, {}, nullptr},
             {"a dialog opens", &canvas, true, {}, [&] { dialog.open(); }, &dialog},
             {"a window opens", &canvas, true, [&] { modeless.show(); }, {}, &modeless},
             {"a tooltip opens", &canvas, false, [&] { QToolTip::showText({}, "tip"); }, {}, own},
             {"one of the popup's opens", &canvas, false, [&] { ofPopup.show(); }, {}, own},
         }) {
        SCOPED_TRACE(what);
        commits = 0;
        host.show();
        label.show();
        canvas.show();
        Open();
        emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        host.activateWindow();
        RunEvents();
        canvas.onPress = inner.onPress = onPress;
        canvas.onRelease = onRelease;
        QTest::mouseClick(clicked, Qt::LeftButton);
        RunEvents();
        EXPECT_EQ(IsOpen(), !dismissed);
        EXPECT_EQ(commits, dismissed);
        EXPECT_TRUE(!active || QApplication::activeWindow() == active);
        if (!dismissed) {
            modeless.show();
            RunEvents();
            EXPECT_TRUE(IsOpen()) << "it is not the click that has opened this";
        }
        for (auto* const opened :
             std::vector<QWidget*>{&dialog, &modeless, &hostsMenu, &canvas, &ofPopup})
            opened->close();
        RunEvents();

        host.activateWindow();
        popup->UI_Show(true);
        RunEvents();
        ASSERT_TRUE(IsOpen());
        QTest::mouseClick(&host, Qt::LeftButton);
        EXPECT_FALSE(IsOpen()) << "the user is back";
    }
}

TEST_F(TouchPopup, TheHookMayLetGoOfThePopupOrFail) {
    Open();
    int failures = 0;
    moxcore::threads::MainThread::SetFailureObserver(
        [&](std::exception_ptr const&) { ++failures; });
    moxcore::utility::RefCountedWeakPtr<UI_TouchPopupContainer> const weak(popup.get());
    popup->InstallNotifyOnCommit(std::make_shared<std::function<void()>>([this] {
        popup.reset();
        throw std::bad_function_call();
    }));
    QTest::keyClick(&WidgetOf(*popup), Qt::Key_Escape);
    EXPECT_EQ(weak.Lock(), nullptr);
    EXPECT_EQ(commits, 0) << "the first hook was replaced";
    RunEvents();
    EXPECT_EQ(failures, 1);
    moxcore::threads::MainThread::SetFailureObserver(nullptr);
}

TEST_F(TouchPopup, OutlivesWhatItHangsFrom) {
    auto owner = std::make_unique<QWidget>();
    owner->show();
    auto node = backend::WrapWidget(owner.get());
    popup = Make(node);
    popup->InstallNotifyOnCommit(std::make_shared<std::function<void()>>([this] { ++commits; }));
    Open();
    node.reset();
    owner.reset();
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(commits, 1);
    popup->StartPopup();
    popup->SetContentSize({10, 10, 20, 20});
    RunEvents();
    EXPECT_TRUE(IsOpen());
}

TEST_F(TouchPopup, IsInTheThemesColours) {
    using namespace skins;
    Open();
    auto const at = [&](int x, int y) {
        return testsupport::PictureOf(WidgetOf(*popup)).pixel(x, y);
    };
    auto const dark = at(100, 100);
    ThemeProvider::SetTheme(ThemeKind::Light);
    RunEvents();
    EXPECT_NE(at(100, 100), dark);
    ThemeProvider::SetTheme(ThemeKind::Dark);
}

}  // namespace
}  // namespace moxui::controls
