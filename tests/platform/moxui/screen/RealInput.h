#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <memory>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_TouchPopupContainer.h"
#include "support/TestWindow.h"

// Windows on a real screen, worked by another program through its server: an X server without a
// window manager, or a Wayland compositor in the corner of such a server's screen. Nothing waits
// for a time: each step waits until what it looks for has come.

namespace moxui {

using controls::UI_TouchPopupContainer;
using moxcore::string::AsciiToUTF16;
using testsupport::WidgetOf;

inline constexpr int kDeadline = 20000;  // milliseconds, for what never comes

inline bool Until(std::function<bool()> const& holds) {
    return QTest::qWaitFor(holds, kDeadline);
}

/// Runs a program to its end, and returns what it has written.
inline QByteArray Run(QString const& program, QStringList const& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(Until([&] { return process.state() == QProcess::NotRunning; }));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

inline void Xdotool(QStringList const& arguments) {
    Run("xdotool", arguments);
}

inline void Click(QPoint place) {
    Xdotool({"mousemove", QString::number(place.x()), QString::number(place.y()), "click", "1"});
}
inline void Click(QWidget const& widget) {
    Click(widget.mapToGlobal(widget.rect().center()));
}

/// The screen, as the server has it.
inline QImage Screen() {
    QTemporaryDir const folder;
    auto const path = folder.filePath("screen.png");
    Run("ffmpeg", {"-v", "error", "-f", "x11grab", "-i", qEnvironmentVariable("DISPLAY"),
                   "-frames:v", "1", path});
    return QImage(path);
}

inline bool IsOnWayland() {
    return QGuiApplication::platformName().startsWith("wayland");
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
        // There it is known where it is.
        if (IsOnWayland())
            host.showFullScreen();
        else
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
        // The compositor adds up the pointer's steps, some of which it misses while it starts, from
        // where the pointer has come into its window.
        if (IsOnWayland()) Xdotool({"mousemove", "1050", "10", "mousemove", "500", "400"});
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
        auto const ground = host.palette().color(QPalette::Window).rgb();
        Click(button);
        ASSERT_TRUE(Until([&] { return IsOpen() && WidgetOf(*popup).isActiveWindow(); }));
        if (!IsOnWayland()) return;
        // Qt knows it before the compositor shows it.
        auto const place = WidgetOf(*popup).geometry().bottomRight() - QPoint(5, 5);
        ASSERT_TRUE(Until([&] { return Screen().pixel(place) != ground; }));
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

}  // namespace moxui
