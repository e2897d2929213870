#include <gmock/gmock.h>

#include <QAccessible>
#include <QTest>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_HotTextURL.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using testsupport::WidgetOf;
using Link = boost::intrusive_ptr<UI_HotTextButton>;
using MouseFunction = ui::UI_Node::MouseEventFunction;

class HotTextTest : public ::testing::Test {
protected:
    HotTextTest() {
        window.Add(link, {20, 20, 200, 15});
        link->UI_SetFocus();
    }

    testsupport::TestWindow window;
    Link link{new UI_HotTextButton(UTF8to16("Select Quillo Location..."))};
    std::vector<std::function<void()>> const presses{
        [this] { QTest::mouseClick(&WidgetOf(*link), Qt::LeftButton); },
        [this] { QTest::keyClick(&WidgetOf(*link), Qt::Key_Return); },
        [this] { QTest::keyClick(&WidgetOf(*link), Qt::Key_Space); },
        [this] { link->Press(); },
        [this] {
            QAccessible::queryAccessibleInterface(&WidgetOf(*link))
                ->actionInterface()
                ->doAction(QAccessibleActionInterface::pressAction());
        },
    };
};

TEST_F(HotTextTest, APressIsTheFunctionsFirstAndNotifiesWhenTheyLeaveIt) {
    int asked = 0, notified = 0;
    bool take = false;
    link->NotifyWhenChanged([&](ui::Message*) { ++notified; });
    link->UI_AddCustomMouseEventFunction(
        std::make_shared<MouseFunction>(
            [&](ui::UI_Node*, ui::MouseEvent const& event, bool& taken) {
                if (event.GetAction() != ui::PointerAction::Press) return false;
                EXPECT_EQ(event.GetButton(), 1);
                ++asked;
                return taken = take;
            }),
        0);
    for (std::size_t i = 0; i < presses.size(); ++i) {
        asked = notified = 0;
        presses[i]();
        EXPECT_EQ(asked, 1) << i;
        EXPECT_EQ(notified, 1) << i;
        take = true;
        presses[i]();
        take = false;
        EXPECT_EQ(asked, 2) << i;
        EXPECT_EQ(notified, 1) << i;
        link->UI_SetDisabled(true);
        presses[i]();
        link->UI_SetEnabled(true);
        link->UI_SetFocus();
        EXPECT_EQ(asked, 2) << i;
    }
}

TEST_F(HotTextTest, MayGoWhileItIsPressed) {
    for (std::size_t i = 0; i < presses.size(); ++i) {
        link = new UI_HotTextButton(UTF8to16("Go"));
        window.Add(link, {20, 20, 200, 15});
        link->UI_SetFocus();
        link->UI_AddCustomMouseEventFunction(
            std::make_shared<MouseFunction>([&](ui::UI_Node*, ui::MouseEvent const& event, bool&) {
                if (event.GetAction() != ui::PointerAction::Press) return false;
                window.Container().ChildRemoveAll();
                link.reset();
                return true;
            }),
            0);
        presses[i]();
        EXPECT_EQ(link, nullptr) << i;
        testsupport::RunEvents();
    }
}

TEST_F(HotTextTest, EventsAreToldWhereTheyAreInTheLinksOwnRectangle) {
    moxcore::geom::PointT<float> where;
    link->UI_AddCustomMouseEventFunction(
        std::make_shared<MouseFunction>([&](ui::UI_Node*, ui::MouseEvent const& event, bool&) {
            if (event.GetAction() == ui::PointerAction::Press) where = event.GetLocation();
            return false;
        }),
        0);
    auto const corner = link->UI_LocalToGlobalF({0, 0, 1, 1});
    auto const inWindow = QPoint(27, 24);
    EXPECT_EQ(QPoint(corner.x, corner.y), window.Widget().mapToGlobal(QPoint(20, 20)));
    auto& widget = WidgetOf(*link);
    QTest::mousePress(&widget, Qt::LeftButton, {}, widget.mapFrom(&window.Widget(), inWindow));
    EXPECT_EQ(where, (moxcore::geom::PointT<float>{7, 4}));
}

TEST_F(HotTextTest, LosesTheEndThatItIsTold) {
    window.Add(link, {20, 20, 80, 15});
    auto const look = [&](drawbot::TruncationMode mode, char const* text) {
        link->SetTruncationMode(mode);
        link->SetText(UTF8to16(text));
        EXPECT_EQ(testsupport::ToolTipOver(WidgetOf(*link)), text);
        return testsupport::PictureOf(window.Widget());
    };
    using drawbot::TruncationMode;
    char const* const here = "Account > Workspace > Project > Here";
    char const* const there = "Account > Workspace > Project > There";
    char const* const elsewhere = "Another > Workspace > Project > Here";
    EXPECT_EQ(look(TruncationMode::End, here), look(TruncationMode::End, there));
    EXPECT_NE(look(TruncationMode::End, here), look(TruncationMode::End, elsewhere));
    EXPECT_EQ(look(TruncationMode::Start, here), look(TruncationMode::Start, elsewhere));
    EXPECT_NE(look(TruncationMode::Start, here), look(TruncationMode::Start, there));
    EXPECT_NE(look(TruncationMode::Middle, here), look(TruncationMode::Middle, there));
    EXPECT_NE(look(TruncationMode::Middle, here), look(TruncationMode::Middle, elsewhere));
}

TEST(HotTextURL, OpensWebAddressesOnly) {
    std::vector<std::string> opened;
    UI_HotTextURL::SetOpener([&](auto const& url) { opened.push_back(UTF16to8(url)); });
    boost::intrusive_ptr<UI_HotTextURL> const link(new UI_HotTextURL);
    int notified = 0;
    link->NotifyWhenChanged([&](ui::Message*) { ++notified; });
    struct Case {
        char const* url;
        bool opens;
    };
    for (auto const& [url, opens] :
         std::vector<Case>{{"https://quillo.example/r/1?a=b#c", true},
                           {"http://127.0.0.1:8080/r/1", true},
                           {"HTTPS://quillo.example/", true},
                           {"", false},
                           {"quillo.example/r/1", false},
                           {"file:///etc/passwd", false},
                           {"javascript:alert(1)", false},
                           {"https:///no-host", false},
                           {"https://quillo.example/a b\n--option", false},
                           {"--help", false},
                           {"ftp://quillo.example/r", false}}) {
        opened.clear();
        notified = 0;
        link->SetURL(UTF8to16(url));
        link->Press();
        EXPECT_EQ(opened, opens ? std::vector<std::string>{url} : std::vector<std::string>{})
            << url;
        EXPECT_EQ(notified, 1);
    }
    UI_HotTextURL::SetOpener(nullptr);
}

}  // namespace
}  // namespace moxui::controls
