#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <cmath>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/datatransfer/ClipboardSendData.h"
#include "moxui/sharedui/UI_ToastManager.h"
#include "support/ManualExecutor.h"
#include "support/TestWindow.h"

namespace moxui::sharedui {
namespace {

using moxcore::string::AsciiToUTF16;
using std::chrono::seconds;
using testsupport::RunEvents;

/// Every toast that is to be seen, as a screen reader calls it.
std::string Shown() {
    std::string names;
    for (auto const* const widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowType() == Qt::ToolTip)
            names += widget->accessibleName().toStdString();
    return names;
}

class Toast : public ::testing::Test {
protected:
    Toast() { backend::SetMainTopLevelWindow(&window.Widget()); }
    ~Toast() override {
        Pass(seconds(1000));
        backend::SetMainTopLevelWindow(nullptr);
    }

    static void Show(char const* text, int priority = kToastManager_DefaultPriority,
                     double duration = 3) {
        UI_ToastManager::GetDefaultInstance()->DisplayToastMessage(
            ui::GetMainTopLevelWindow(), AsciiToUTF16(text), duration, priority);
        RunEvents();
    }
    void Pass(std::chrono::microseconds time) {
        executor.AdvanceBy(time);
        RunEvents();
    }

    testsupport::ManualExecutor executor;
    testsupport::TestWindow window;
};

TEST_F(Toast, GoesByItselfAndWaitsForHigherPrioritiesOnly) {
    Show("first");
    Pass(seconds(2));
    EXPECT_EQ(Shown(), "first");
    Show("equal");
    Pass(seconds(2));
    EXPECT_EQ(Shown(), "equal") << "its time began anew";
    Show("low", -2);
    Show("lower", -3);
    Show("low too", -2);
    Show("high", 1, 5);
    EXPECT_EQ(Shown(), "high");
    for (char const* const next : {"low", "low too", "lower", ""}) {
        Pass(seconds(5));
        EXPECT_EQ(Shown(), next);
    }
}

TEST_F(Toast, ADurationThatIsNoneIsTheDefaultOne) {
    for (double const duration : {0.0, -1.0, std::nan("")}) {
        Show("text", 0, duration);
        Pass(seconds(2));
        EXPECT_EQ(Shown(), "text");
        Pass(seconds(1));
        EXPECT_EQ(Shown(), "");
    }
}

TEST_F(Toast, IsAnAlertThatTakesNeitherFocusNorClicks) {
    auto* const focused = QApplication::focusWidget();
    Show("<b>Copied</b>");
    EXPECT_EQ(Shown(), "<b>Copied</b>");
    EXPECT_EQ(QApplication::focusWidget(), focused);
    EXPECT_TRUE(window.Widget().isActiveWindow());
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible() || widget == &window.Widget()) continue;
        EXPECT_EQ(QAccessible::queryAccessibleInterface(widget)->role(), QAccessible::AlertMessage);
        EXPECT_TRUE(widget->windowFlags() & Qt::WindowTransparentForInput);
        EXPECT_TRUE(window.Widget().geometry().contains(widget->geometry()));
    }
}

TEST_F(Toast, IsShownAlsoWithoutAMainWindow) {
    backend::SetMainTopLevelWindow(nullptr);
    EXPECT_EQ(ui::GetMainTopLevelWindow().GetNode(), nullptr);
    window.Widget().hide();
    Show("text");
    EXPECT_EQ(Shown(), "text");
    {
        QWidget other;
        backend::SetMainTopLevelWindow(&other);
        EXPECT_NE(ui::GetMainTopLevelWindow().GetNode(), nullptr);
    }
    EXPECT_EQ(ui::GetMainTopLevelWindow().GetNode(), nullptr);
}

TEST(Clipboard, HoldsExactlyWhatWasSent) {
    auto const data = datatransfer::NewClipboardSendData();
    QGuiApplication::clipboard()->setText("before");
    data->SendToSystemClipboard();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "before");
    for (QString const& text : {QString("https://x/r/1?a=b&c"),
                                QString::fromUtf16(u"\u05d0\U0001F600\n<b>"), QString("")}) {
        auto const* const units = reinterpret_cast<unsigned short const*>(text.utf16());
        data->PutText({units, units + text.size()});
        data->SendToSystemClipboard();
        EXPECT_EQ(QGuiApplication::clipboard()->text(), text);
    }
}

}  // namespace
}  // namespace moxui::sharedui
