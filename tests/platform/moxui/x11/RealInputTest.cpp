#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QProcess>
#include <QPushButton>
#include <QTest>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_TouchPopupContainer.h"
#include "moxui/sharedui/UI_ToastManager.h"
#include "support/TestWindow.h"

// Windows under a real X server, without a window manager, worked by another program through the
// server. Nothing waits for a time: each step waits until what it looks for has come.

namespace moxui {
namespace {

using controls::UI_TouchPopupContainer;
using moxcore::string::AsciiToUTF16;
using testsupport::WidgetOf;

constexpr int kDeadline = 20000;  // milliseconds, for what never comes

bool Until(std::function<bool()> const& holds) {
    return QTest::qWaitFor(holds, kDeadline);
}

/// Runs a program to its end, and returns what it has written.
QByteArray Run(QString const& program, QStringList const& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(Until([&] { return process.state() == QProcess::NotRunning; }));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

void Xdotool(QStringList const& arguments) {
    Run("xdotool", arguments);
}

void Click(QPoint place) {
    Xdotool({"mousemove", QString::number(place.x()), QString::number(place.y()), "click", "1"});
}
void Click(QWidget const& widget) {
    Click(widget.mapToGlobal(widget.rect().center()));
}

/// A host with a field that has the focus and a button that opens the popup, which holds a menu.
class RealInput : public ::testing::Test {
protected:
    RealInput() {
        backend::RunMainThreadQueueInQt();
        host.setGeometry(100, 100, 700, 500);
        field.setParent(&host);
        field.setGeometry(20, 20, 100, 30);
        button.setParent(&host);
        button.setGeometry(580, 20, 100, 30);
        button.setFocusPolicy(Qt::NoFocus);
        outside.setParent(&host);
        outside.setGeometry(20, 300, 100, 30);
        QObject::connect(&button, &QPushButton::clicked, [this] { Open(); });
        QObject::connect(&outside, &QPushButton::clicked, [this] { ++clicksOutside; });
        host.show();
        host.activateWindow();
        field.setFocus();

        anchor = backend::WrapWidget(&button);
        popup = new UI_TouchPopupContainer(nullptr, anchor, false, true, false,
                                           ui::DPISelectionType::OwnScreen, true);
        popup->InstallNotifyOnCommit(
            std::make_shared<std::function<void()>>([this] { ++commits; }));
        menu = new controls::UI_Popup;
        for (char const* const text : {"first", "second"})
            menu->AddItem(AsciiToUTF16(text));
        menu->SetPreShowPopupMenuFunction([this](auto&) { popup->SetPopupMenuShowing(true); });
        menu->SetPostShowPopupMenuFunction([this](auto&) { popup->SetPopupMenuShowing(false); });
        popup->GetContainer()->ChildPushBack(menu);
        menu->UI_SetLocalRectF({10, 10, 120, 20});
        menu->UI_Show(true);
        EXPECT_TRUE(Until([&] { return field.hasFocus(); }));
    }
    ~RealInput() override {
        popup.reset();
        testsupport::RunEvents();
    }

    void Open() {
        popup->StartPopup();
        auto const corner = button.mapToGlobal(button.rect().bottomRight());
        popup->SetContentSize({float(corner.x()) - 200, float(corner.y()) + 5, 200, 120});
    }
    void OpenByClick() {
        Click(button);
        ASSERT_TRUE(Until([&] { return IsOpen() && WidgetOf(*popup).isActiveWindow(); }));
    }
    [[nodiscard]] bool IsOpen() const { return WidgetOf(*popup).isVisible(); }

    QWidget host;
    QPushButton field, button, outside;
    boost::intrusive_ptr<ui::UI_Node> anchor;
    boost::intrusive_ptr<UI_TouchPopupContainer> popup;
    boost::intrusive_ptr<controls::UI_Popup> menu;
    int commits = 0;
    int clicksOutside = 0;
};

TEST_F(RealInput, EscapeAndClicksOutsideDismissAPopupAndTheFocusGoesBack) {
    OpenByClick();
    Xdotool({"key", "Escape"});
    EXPECT_TRUE(Until([&] { return !IsOpen() && field.hasFocus(); }));

    OpenByClick();
    Click(outside);
    EXPECT_TRUE(Until([&] { return !IsOpen() && clicksOutside == 1; }));
    EXPECT_TRUE(Until([&] { return host.isActiveWindow(); }));

    OpenByClick();
    Click(button);
    EXPECT_TRUE(Until([&] { return !IsOpen() && host.isActiveWindow(); }));
    EXPECT_EQ(commits, 3);
}

TEST_F(RealInput, AMenuInsideClosesAlone) {
    OpenByClick();
    auto const menuIsOpen = [] { return QApplication::activePopupWidget() != nullptr; };
    Click(WidgetOf(*menu));
    ASSERT_TRUE(Until(menuIsOpen));
    Xdotool({"key", "Down", "Return"});
    ASSERT_TRUE(Until([&] { return !menuIsOpen() && menu->GetValue() == 1; }));

    for (auto const& close : std::vector<std::function<void()>>{[] {
                                                                    Xdotool({"key", "Escape"});
                                                                },
                                                                [this] { Click(outside); }}) {
        Click(WidgetOf(*menu));
        ASSERT_TRUE(Until(menuIsOpen));
        close();
        ASSERT_TRUE(Until([&] { return !menuIsOpen(); }));
        testsupport::RunEvents();
        EXPECT_TRUE(IsOpen());
    }
    EXPECT_EQ(commits, 0);
    Click(outside);
    EXPECT_TRUE(Until([&] { return !IsOpen(); }));
    EXPECT_EQ(commits, 1);
}

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

TEST_F(RealInput, ClicksGoThroughAToast) {
    OpenByClick();
    sharedui::UI_ToastManager::GetDefaultInstance()->DisplayToastMessage(
        ui::OS_Window(anchor.get()), AsciiToUTF16("Copied"), 1e6, 0);
    auto const toast = [] {
        for (auto* const widget : QApplication::topLevelWidgets())
            if (widget->windowType() == Qt::ToolTip && widget->isVisible()) return widget;
        return static_cast<QWidget*>(nullptr);
    };
    ASSERT_TRUE(Until([&] { return toast() && QTest::qWaitForWindowExposed(toast()); }));
    EXPECT_TRUE(WidgetOf(*popup).isActiveWindow());
    outside.setGeometry(QRect(host.mapFromGlobal(toast()->pos()), toast()->size()));
    Click(*toast());
    EXPECT_TRUE(Until([&] { return clicksOutside == 1; }));
}

}  // namespace
}  // namespace moxui
