#include "platform/moxui/screen/RealInput.h"

#include "moxui/sharedui/UI_ToastManager.h"

// What holds on an X server and on Wayland alike.

namespace moxui {
namespace {

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
