#include "moxui/controls/UI_Popup.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QListView>
#include <QScopeGuard>
#include <QScreen>
#include <QTest>
#include <QWheelEvent>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_PicturePopup.h"
#include "moxui/controls/UI_TouchPopupContainer.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::string::AsciiToUTF16;
using ::testing::ElementsAre;
using testsupport::RunEvents;
using testsupport::TestWindow;
using testsupport::WidgetOf;

/// What has the keys while a menu is open; null while none is.
QWidget* OpenMenu() {
    auto* const menu = QApplication::activePopupWidget();
    return menu && menu->focusWidget() ? menu->focusWidget() : menu;
}

class PopupTest : public ::testing::Test {
protected:
    PopupTest() {
        popup->NotifyWhenChanged([this](ui::Message*) { chosen.push_back(popup->GetValue()); });
        popup->SetPreShowPopupMenuFunction([this](UI_Popup&) { calls += "before "; });
        popup->SetPostShowPopupMenuFunction([this](UI_Popup&) { calls += "after "; });
        window.Add(popup, {10, 10, 150, 20});
    }
    ~PopupTest() override {
        if (auto* const menu = QApplication::activePopupWidget()) menu->close();
    }

    void AddItems(std::vector<std::string> const& texts) {
        for (auto const& text : texts)
            popup->AddItem(AsciiToUTF16(text));
    }
    void Key(Qt::Key key) {
        auto* const menu = OpenMenu();
        QTest::keyClick(menu ? menu : &WidgetOf(*popup), key);
        RunEvents();
    }
    QString Shown() {
        return QAccessible::queryAccessibleInterface(&WidgetOf(*popup))->text(QAccessible::Value);
    }

    TestWindow window;
    boost::intrusive_ptr<UI_Popup> popup{new UI_Popup(0, false)};
    std::vector<int> chosen;
    std::string calls;
};

TEST_F(PopupTest, ShowsTheEntryAtItsValueWhereThatIsOneAndTellsNobodyOfAProgramsChoice) {
    popup->AddHeading(AsciiToUTF16("Heading"));
    AddItems({"one", "two\nlines"});
    for (auto const& [value, text] : std::vector<std::pair<int, QString>>{
             {1, "one"}, {2, "two lines"}, {0, ""}, {3, ""}, {-1, ""}}) {
        popup->SetValue(value);
        EXPECT_EQ(popup->GetValue(), value);
        EXPECT_EQ(Shown(), text) << value;
    }
    popup->DeleteAllItems();
    popup->SetValue(0);
    EXPECT_EQ(Shown(), "");
    AddItems({"a", "b"});
    EXPECT_EQ(Shown(), "a") << "the entry at the value that was set before";
    EXPECT_TRUE(chosen.empty());
}

TEST_F(PopupTest, EveryKeyThatShouldOpensTheMenuAndEscapeLeavesAllAsItWas) {
    AddItems({"one", "two"});
    popup->SetValue(1);
    popup->UI_SetFocus();
    for (auto const key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Down, Qt::Key_Up, Qt::Key_F4}) {
        Key(key);
        ASSERT_NE(OpenMenu(), nullptr) << key;
        Key(Qt::Key_Up);
        Key(Qt::Key_Escape);
        EXPECT_EQ(OpenMenu(), nullptr);
        EXPECT_TRUE(popup->UI_HasFocus());
    }
    EXPECT_EQ(Shown(), "two");
    EXPECT_TRUE(chosen.empty());
    EXPECT_EQ(calls, "before after before after before after before after before after ");
}

TEST_F(PopupTest, TheKeysOfTheMenuPassOverWhatCannotBeChosen) {
    popup->AddHeading(AsciiToUTF16("First heading"));
    AddItems({"able", "baker", "charlie"});
    popup->AddHeading(AsciiToUTF16("Second heading"));
    AddItems({"cat", "easy"});
    popup->EnableItem(6, false);
    popup->SetValue(2);
    // However slow the machine is, letters that are typed one after the other belong together.
    auto const restore = qScopeGuard([interval = QApplication::keyboardInputInterval()] {
        QApplication::setKeyboardInputInterval(interval);
    });
    QApplication::setKeyboardInputInterval(1'000'000);
    struct Case {
        std::vector<Qt::Key> keys;
        int chosen;
    };
    for (auto const& [keys, expected] : std::vector<Case>{
             {{Qt::Key_Home}, 1},
             {{Qt::Key_End}, 5},
             {{Qt::Key_Down, Qt::Key_Down}, 5},
             {{Qt::Key_Home, Qt::Key_Up}, 1},
             {{Qt::Key_End, Qt::Key_Down}, 5},
             {{Qt::Key_End, Qt::Key_Up}, 3},
             {{Qt::Key_PageDown}, 5},
             {{Qt::Key_PageUp}, 1},
             {{Qt::Key_C, Qt::Key_A}, 5},
         }) {
        popup->SetValue(2);
        chosen.clear();
        Key(Qt::Key_Space);
        for (auto const key : keys)
            Key(key);
        Key(Qt::Key_Return);
        EXPECT_THAT(chosen, ElementsAre(expected)) << keys.front();
    }
    popup->EnableAllItems();
    Key(Qt::Key_Space);
    Key(Qt::Key_End);
    Key(Qt::Key_Return);
    EXPECT_EQ(popup->GetValue(), 6);
    EXPECT_EQ(popup->GetItemText(6), AsciiToUTF16("easy"));
}

TEST_F(PopupTest, ChoosingTheSameEntryAgainIsAChoice) {
    AddItems({"one"});
    Key(Qt::Key_Space);
    Key(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(0));
}

TEST_F(PopupTest, NeitherTheWheelNorLettersChangeWhatIsChosenWhileTheMenuIsClosed) {
    AddItems({"one", "two"});
    popup->UI_SetFocus();
    QWheelEvent wheel({5, 5}, {5, 5}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&WidgetOf(*popup), &wheel);
    EXPECT_FALSE(wheel.isAccepted()) << "what lies behind may scroll";
    Key(Qt::Key_T);
    Key(Qt::Key_End);
    EXPECT_EQ(Shown(), "one");
}

TEST_F(PopupTest, AMenuOfManyEntriesStaysOnTheScreenAndScrolls) {
    for (int i = 0; i < 1000; ++i)
        popup->AddItemWithCustomIcon(AsciiToUTF16("Account " + std::to_string(i)));
    std::vector<int> asked;
    popup->SetCustomIconMenuItemImageFunction(
        [&](UI_PictureSupplyMessage*, int index) { asked.push_back(index); });
    Key(Qt::Key_Space);
    auto* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->screen()->availableGeometry().contains(menu->geometry()));
    auto* const list = menu->findChild<QListView*>();
    Key(Qt::Key_End);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualRect(list->currentIndex())));
    asked.clear();
    static_cast<void>(testsupport::PictureOf(*menu));
    EXPECT_THAT(asked, ::testing::Contains(999));
    EXPECT_LT(asked.size(), 100U) << "only what is seen";
    Key(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(999));
}

TEST_F(PopupTest, WhoeverHearsTheMenuMayChangeItsEntriesOrLetGoOfThePopup) {
    AddItems({"old"});
    popup->SetPreShowPopupMenuFunction([](UI_Popup& shown) {
        shown.DeleteAllItems();
        shown.AddItem(AsciiToUTF16("a"));
        shown.AddItem(AsciiToUTF16("b"));
    });
    popup->SetPostShowPopupMenuFunction([](UI_Popup& shown) { shown.AddItem(AsciiToUTF16("c")); });
    Key(Qt::Key_Space);
    Key(Qt::Key_End);
    Key(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(1));
    EXPECT_EQ(popup->GetItemCount(), 3);

    auto const letGo = [this](UI_Popup& shown) {
        window.Container().ChildRequestRemove(&shown);
        popup.reset();
    };
    popup->SetPreShowPopupMenuFunction(letGo);
    popup->SetPostShowPopupMenuFunction([this](UI_Popup&) { calls += "gone "; });
    QTest::keyClick(&WidgetOf(*popup), Qt::Key_Space);
    RunEvents();
    EXPECT_EQ(popup, nullptr);
    EXPECT_EQ(OpenMenu(), nullptr);
    EXPECT_EQ(calls, "gone ");
}

TEST_F(PopupTest, AMenuWhoseEntriesAreAllDeletedEnds) {
    AddItems({"one", "two"});
    Key(Qt::Key_Space);
    ASSERT_NE(OpenMenu(), nullptr);
    Key(Qt::Key_Down);
    popup->DeleteAllItems();
    RunEvents();
    EXPECT_EQ(OpenMenu(), nullptr);
    EXPECT_EQ(popup->GetItemCount(), 0);
    EXPECT_EQ(calls, "before after ");
    EXPECT_TRUE(chosen.empty());
}

TEST_F(PopupTest, APopupThatDiesWithItsMenuOpenClosesIt) {
    AddItems({"one"});
    Key(Qt::Key_Space);
    ASSERT_NE(OpenMenu(), nullptr);
    window.Container().ChildRequestRemove(popup);
    popup.reset();
    RunEvents();
    EXPECT_EQ(OpenMenu(), nullptr);
    EXPECT_EQ(calls, "before after ");
}

TEST_F(PopupTest, AClickElsewhereClosesTheMenu) {
    AddItems({"one"});
    QTest::mouseClick(&WidgetOf(*popup), Qt::LeftButton);
    auto* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    QTest::mouseClick(menu, Qt::LeftButton, {}, QPoint(-50, -50));
    RunEvents();
    EXPECT_EQ(OpenMenu(), nullptr);
    EXPECT_EQ(calls, "before after ");
    EXPECT_TRUE(chosen.empty());
}

TEST_F(PopupTest, AsksForTheWidthOfWhatItMayShow) {
    AddItems({"i", "a much longer entry"});
    auto const narrow = popup->UI_GetRecommendedSize(nullptr);
    popup->SetPickerMeasureStrategy(PickerMeasureStrategy::WidestItem);
    auto const wide = popup->UI_GetRecommendedSize(nullptr);
    popup->SetPickerMeasureStrategy(PickerMeasureStrategy::ChosenItem);
    popup->SetValue(1);
    EXPECT_LT(narrow.x, wide.x);
    EXPECT_EQ(popup->UI_GetRecommendedSize(nullptr), wide);
}

TEST_F(PopupTest, AScreenReaderHearsWhatItIsAndWhatIsChosen) {
    AddItems({"one", "two"});
    popup->SetValue(1);
    popup->UI_SetAccessibleName(AsciiToUTF16("Account"));
    auto* const accessible = QAccessible::queryAccessibleInterface(&WidgetOf(*popup));
    EXPECT_EQ(accessible->role(), QAccessible::ComboBox);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Account");
    EXPECT_EQ(accessible->text(QAccessible::Value), "two");
}

/// A popup window, of the host's making or of ours, with a menu's button in it.
class NestedMenuTest : public ::testing::TestWithParam<bool> {};

TEST_P(NestedMenuTest, AMenuLeavesThePopupWindowItIsInOpenAndGivesItTheFocusBack) {
    TestWindow window;
    boost::intrusive_ptr<UI_Popup> const popup(new UI_Popup);
    popup->AddItem(AsciiToUTF16("one"));
    QWidget qtPopup(nullptr, Qt::Popup);
    boost::intrusive_ptr<ui::OS_ViewContainer> container;
    boost::intrusive_ptr<UI_TouchPopupContainer> touchPopup;
    if (GetParam()) {
        container = backend::FillWidget(&qtPopup);
        qtPopup.setGeometry(100, 100, 200, 100);
        qtPopup.show();
    } else {
        touchPopup = new UI_TouchPopupContainer(nullptr, &window.Container(), false, true, false,
                                                ui::DPISelectionType::OwnScreen, true);
        container = touchPopup->GetContainer();
        popup->SetPreShowPopupMenuFunction(
            [&](UI_Popup&) { touchPopup->SetPopupMenuShowing(true); });
        popup->SetPostShowPopupMenuFunction(
            [&](UI_Popup&) { touchPopup->SetPopupMenuShowing(false); });
        touchPopup->StartPopup();
        touchPopup->SetContentSize({100, 100, 200, 100});
    }
    container->ChildPushBack(popup);
    popup->UI_SetLocalRectF({10, 10, 100, 20});
    popup->UI_Show(true);
    RunEvents();
    auto& outer = *WidgetOf(*popup).window();
    popup->UI_SetFocus();
    for (auto const key : {Qt::Key_Escape, Qt::Key_Return}) {
        QTest::keyClick(&WidgetOf(*popup), Qt::Key_Space);
        RunEvents();
        EXPECT_TRUE(outer.isVisible());
        ASSERT_NE(QApplication::activePopupWidget(), &outer);
        QTest::keyClick(OpenMenu(), key);
        RunEvents();
        EXPECT_TRUE(outer.isVisible());
        EXPECT_TRUE(popup->UI_HasFocus());
    }
    container->ChildRemoveAll();
}

INSTANTIATE_TEST_SUITE_P(QtPopupOrOurs, NestedMenuTest, ::testing::Bool());

class PicturePopupTest : public ::testing::Test {
protected:
    PicturePopupTest() {
        for (auto const* const text : {"Create & copy", "Sign out", "Refresh"})
            more->AddItem(AsciiToUTF16(text));
        more->NotifyWhenChanged([this](ui::Message*) { chosen.push_back(more->GetValue()); });
        more->SetPreShowPopupMenuFunction([this](UI_PicturePopup&) { calls += "before "; });
        more->SetPostShowPopupMenuFunction([this](UI_PicturePopup&) { calls += "after "; });
        window.Add(more, {10, 10, 18, 18});
    }

    TestWindow window;
    boost::intrusive_ptr<UI_PicturePopup> more{new UI_PicturePopup};
    std::vector<int> chosen;
    std::string calls;
};

TEST_F(PicturePopupTest, OpensByKeyAndMouseAndTellsWhichCommandWasChosen) {
    more->EnableItem(1, false);
    more->UI_SetFocus();
    auto const open = [&](Qt::Key key) {
        key == Qt::Key_unknown ? QTest::mouseClick(&WidgetOf(*more), Qt::LeftButton)
                               : QTest::keyClick(&WidgetOf(*more), key);
        return OpenMenu();
    };
    for (auto const key :
         {Qt::Key_Space, Qt::Key_Return, Qt::Key_Down, Qt::Key_Up, Qt::Key_unknown}) {
        auto* const menu = open(key);
        ASSERT_NE(menu, nullptr) << key;
        QTest::keyClick(menu, Qt::Key_Escape);
        EXPECT_EQ(OpenMenu(), nullptr);
    }
    EXPECT_TRUE(chosen.empty());
    EXPECT_EQ(more->GetValue(), -1);

    QTest::keyClick(open(Qt::Key_Space), Qt::Key_Return);
    auto* const menu = open(Qt::Key_Space);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(0, 2)) << "a disabled command is passed over";
    EXPECT_EQ(calls.size(), std::string("before after ").size() * 7);

    auto* const accessible = QAccessible::queryAccessibleInterface(&WidgetOf(*more));
    EXPECT_EQ(accessible->role(), QAccessible::ButtonMenu);
}

TEST_F(PicturePopupTest, ThePressThatClosesTheMenuDoesNotOpenItAgain) {
    QTest::mouseClick(&WidgetOf(*more), Qt::LeftButton);
    auto* const menu = OpenMenu();
    ASSERT_NE(menu, nullptr);
    auto const onButton = menu->mapFromGlobal(WidgetOf(*more).mapToGlobal(QPoint(5, 5)));
    QTest::mousePress(menu, Qt::LeftButton, {}, onButton);
    EXPECT_TRUE(menu->testAttribute(Qt::WA_NoMouseReplay));
    QTest::mouseRelease(&WidgetOf(*more), Qt::LeftButton);
    RunEvents();
    EXPECT_EQ(OpenMenu(), nullptr);
}

TEST_F(PicturePopupTest, DyingWithItsMenuOpenItClosesIt) {
    QTest::keyClick(&WidgetOf(*more), Qt::Key_Space);
    ASSERT_NE(OpenMenu(), nullptr);
    window.Container().ChildRequestRemove(more);
    more.reset();
    RunEvents();
    EXPECT_EQ(OpenMenu(), nullptr);
    EXPECT_EQ(calls, "before after ");
}

}  // namespace
}  // namespace moxui::controls
