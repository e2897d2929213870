#include <QTest>
#include <QWindow>

#include "platform/moxui/TouchPopupTest.h"

namespace moxui::controls {
namespace {

/// Another window of the host's, with a field that has its focus and a button.
struct OtherWindow : QWidget {
    OtherWindow() {
        setGeometry(100, 350, 400, 200);
        button.setGeometry(300, 20, 80, 30);
        show();
        field.setFocus();
        RunEvents();
    }
    QPushButton field{this}, button{this};
};

TEST_F(TouchPopup, GivenAnotherAnchorBelongsToThatOnesWindow) {
    struct Way {
        char const* what;
        std::function<void(std::unique_ptr<OtherWindow>&)> goes;
    };
    for (auto const& [what, goes] :
         std::vector<Way>{{"hidden", [](auto& other) { other->button.hide(); }},
                          {"closed", [](auto& other) { other->close(); }},
                          {"destroyed", [](auto& other) { other.reset(); }}})
        for (bool const isShown : {true, false}) {
            SCOPED_TRACE(testing::Message() << what << isShown);
            commits = 0;
            auto other = std::make_unique<OtherWindow>();
            auto const otherAnchor = backend::WrapWidget(&other->button);
            auto old = std::make_unique<QPushButton>(&host);
            old->setGeometry(400, 10, 60, 20);
            host.setGeometry(200, 100, 500, 300);
            host.show();
            host.activateWindow();
            RunEvents();
            popup->SetAnchor(backend::WrapWidget(old.get()));
            Open();
            buttons[0]->UI_SetFocus();
            popup->UI_Show(isShown);
            popup->SetAnchor(otherAnchor);
            popup->UI_Show(true);
            RunEvents();

            auto& window = WidgetOf(*popup);
            EXPECT_EQ(window.windowHandle()->transientParent(), other->windowHandle());
            EXPECT_EQ(buttons[0]->UI_HasFocus(), isShown);
            auto const isBesideIt = [&] {
                auto const corner = other->button.rect().bottomRight();
                return window.frameGeometry().topRight() - other->button.mapToGlobal(corner) ==
                       QPoint(0, 5);  // as it was asked for
            };
            EXPECT_TRUE(isBesideIt());
            other->move(other->x() + 30, other->y() + 40);
            RunEvents();
            EXPECT_TRUE(isBesideIt());
            QTest::keyClick(&window, Qt::Key_Escape);
            RunEvents();
            EXPECT_TRUE(other->field.hasFocus());

            popup->UI_Show(true);
            host.move(host.x() + 7, host.y() + 7);
            host.close();
            old.reset();
            RunEvents();
            EXPECT_TRUE(IsOpen() && isBesideIt()) << "the one before is of no matter any more";
            goes(other);
            EXPECT_FALSE(IsOpen());
            EXPECT_EQ(commits, 2);
        }
}

TEST_F(TouchPopup, GivenNoAnchorStaysWhereItIs) {
    Open();
    auto const place = WidgetOf(*popup).geometry();
    popup->SetAnchor(nullptr);
    host.move(host.x() + 30, host.y());
    host.close();
    RunEvents();
    EXPECT_EQ(WidgetOf(*popup).windowHandle()->transientParent(), nullptr);
    EXPECT_EQ(WidgetOf(*popup).geometry(), place);
    EXPECT_TRUE(IsOpen());
    popup->SetAnchor(anchor);
    EXPECT_EQ(WidgetOf(*popup).geometry(), place) << "that anchor's place had no part in it";
    popup->UI_Show(false);
    EXPECT_EQ(commits, 0);
}

TEST_F(TouchPopup, GoesWithItsAnchorIntoAnotherWindow) {
    for (bool const isShown : {true, false}) {
        SCOPED_TRACE(isShown);
        commits = 0;
        OtherWindow other;
        host.show();
        Open();
        popup->UI_Show(isShown);
        button.setParent(&other);  // which hides it
        EXPECT_FALSE(IsOpen());
        EXPECT_EQ(commits, isShown);
        button.show();
        popup->StartPopup();
        RunEvents();
        EXPECT_EQ(WidgetOf(*popup).windowHandle()->transientParent(), other.windowHandle());
        auto const place = WidgetOf(*popup).pos();
        other.move(other.x() + 30, other.y() + 40);
        host.move(host.x() + 7, host.y() + 7);
        host.close();
        RunEvents();
        EXPECT_EQ(WidgetOf(*popup).pos() - place, QPoint(30, 40));
        EXPECT_TRUE(IsOpen());
        other.close();
        EXPECT_FALSE(IsOpen());
        button.setParent(&host);
        button.show();
    }
}

}  // namespace
}  // namespace moxui::controls
