#include <gmock/gmock.h>

#include <QAbstractItemView>
#include <QAccessible>
#include <QTest>

#include "platform/moxui/MultiColumnTreeFixture.h"

namespace moxui::controls {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testsupport::RunEvents;
using MultiColumnTreeTest = MultiColumnTreeFixture;

TEST_F(MultiColumnTreeTest, ShowsWhatIsOpenIndentedAndKnowsWhoseChildIsWhose) {
    Fill();
    EXPECT_THAT(Drawn(), ElementsAre("Assets", "ant", "dog"));
    tree->OpenRow(cat);
    EXPECT_THAT(Drawn(), ElementsAre("Assets", "ant", "dog")) << "its parent is closed";
    tree->OpenRow(ant);
    EXPECT_THAT(Drawn(), ElementsAre("Assets", "ant", "bee", "cat", "cow", "dog"));
    EXPECT_EQ(cells["cow"].x - cells["bee"].x, cells["bee"].x - cells["ant"].x);
    EXPECT_GT(cells["ant"].x, cells["Assets"].x);

    EXPECT_EQ(cow->GetParentRow(), cat);
    EXPECT_EQ(assets->GetParentRow(), nullptr);
    EXPECT_EQ(ant->GetChildCount(), 2U);
    EXPECT_EQ(ant->GetChildRow(1), cat);
    EXPECT_EQ(ant->GetChildRow(2), nullptr);
    EXPECT_TRUE(tree->IsRowOpen(ant));
    EXPECT_FALSE(tree->IsRowOpen(dog));
    EXPECT_THAT(Heard(), IsEmpty()) << "the program did it";
}

TEST_F(MultiColumnTreeTest, RowsThatAreAppendedLaterAreShownWhereTheirParentIsKnown) {
    Fill();
    EXPECT_EQ(ant->GetChildRow(0), bee);
    tree->OpenRow(ant);
    auto const eel = Add(ant, "eel");
    Add(eel, "elk");
    Add(ant, "emu");
    Add(nullptr, "Top");
    EXPECT_EQ(ant->GetChildRow(2), eel);
    EXPECT_THAT(Drawn(), ElementsAre("Assets", "ant", "bee", "cat", "eel", "emu", "dog", "Top"));
    tree->OpenRow(eel);
    EXPECT_THAT(Drawn(), ::testing::Contains("elk"));
    EXPECT_EQ(tree->GetRowCount(), 10U);
}

TEST_F(MultiColumnTreeTest, DeletedRowsAreOfNoTreeAndANewOneCanBeBuilt) {
    Fill();
    tree->SelectRow(ant, true, true, true);
    tree->DeleteAllRows();
    EXPECT_THAT(Drawn(), IsEmpty());
    EXPECT_EQ(cow->GetParentRow(), nullptr);
    EXPECT_EQ(ant->GetChildCount(), 0U);
    tree->OpenRow(ant);
    tree->SelectRow(ant, true, true, true);
    tree->ScrollRowIntoView(ant, false, 0, true);
    EXPECT_EQ(tree->CreateAndAppendRow(ant, true, false), nullptr);
    EXPECT_FALSE(tree->IsRowOpen(ant));
    EXPECT_FALSE(tree->IsRowSelected(ant));
    EXPECT_EQ(Selected(), "");
    Fill();
    EXPECT_THAT(Drawn(), ElementsAre("Assets", "ant", "dog"));
    EXPECT_THAT(Heard(), IsEmpty());
}

TEST_F(MultiColumnTreeTest, IsWorkedWithoutAMouse) {
    Fill(100);
    tree->SelectRow(assets, true, true, true);
    struct Case {
        Qt::Key key;
        char const* selected;
        char const* heard;
    };
    for (auto const& [key, selected, told] : std::vector<Case>{
             {Qt::Key_Down, "ant", "select ant; "},
             {Qt::Key_Right, "ant", "open ant; "},
             {Qt::Key_Right, "bee", "select bee; "},
             {Qt::Key_Right, "bee", ""},
             {Qt::Key_Down, "cat", "select cat; "},
             {Qt::Key_Left, "ant", "select ant; "},
             {Qt::Key_Left, "ant", "close ant; "},
             {Qt::Key_Left, "Assets", "select Assets; "},
             {Qt::Key_Up, "Assets", ""},
             {Qt::Key_End, "more99", "select more99; "},
             {Qt::Key_Home, "Assets", "select Assets; "},
             {Qt::Key_PageDown, "more6", "select more6; "},
             {Qt::Key_PageUp, "Assets", "select Assets; "},
             {Qt::Key_D, "dog", "select dog; "},
             {Qt::Key_Space, "dog", ""},
         }) {
        Key(key);
        EXPECT_EQ(Selected(), selected) << key;
        EXPECT_EQ(Heard(), told) << key;
        EXPECT_TRUE(View().viewport()->rect().contains(View().visualRect(View().currentIndex())));
    }
}

TEST_F(MultiColumnTreeTest, EnterGoesToWhoeverAsksForItAndToTheViewAroundOtherwise) {
    Fill();
    tree->SelectRow(dog, true, true, true);
    auto const isTaken = [&](Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&View(), &event);
        return event.isAccepted();
    };
    EXPECT_FALSE(isTaken(Qt::Key_Return));
    EXPECT_FALSE(isTaken(Qt::Key_Escape));
    std::string activated;
    tree->SetRowActivatedFunction([&](Row const& row) { activated += names[row]; });
    EXPECT_TRUE(isTaken(Qt::Key_Return));
    EXPECT_EQ(activated, "dog");
}

TEST_F(MultiColumnTreeTest, TheMouseSelectsAndOpensAndLeavesNoSelectionEmpty) {
    Fill();
    Drawn();
    auto const at = [&](char const* name, float dx) {
        auto const& cell = cells[name];
        return QPoint(static_cast<int>(cell.x + dx), static_cast<int>(cell.y + 5));
    };
    auto const click = [&](QPoint const& point, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(View().viewport(), Qt::LeftButton, modifiers, point);
        RunEvents();
    };
    click(at("dog", 20));
    EXPECT_EQ(Heard(), "select dog; ");
    click(at("dog", 20), Qt::ControlModifier);
    click(QPoint(100, 190));
    EXPECT_EQ(Selected(), "dog");
    click(at("ant", -8));
    EXPECT_THAT(Heard(), ::testing::HasSubstr("open ant; "));
    tree->SetEmptySelectionSupported(true);
    tree->SelectRow(dog, true, true, true);
    Drawn();
    click(at("dog", 20), Qt::ControlModifier);
    EXPECT_EQ(Selected(), "");
}

TEST_F(MultiColumnTreeTest, SeveralRowsAreSelectedWhereThatIsAllowed) {
    Fill();
    tree->SelectRow(ant, true, false, true);
    tree->SelectRow(dog, true, false, false);
    EXPECT_EQ(Selected(), "dog");
    tree->SetSingleSelection(false);
    tree->SelectRow(ant, true, false, true);
    EXPECT_EQ(tree->GetSelectedRows().size(), 2U);
    tree->SelectRow(dog, false, false, false);
    EXPECT_EQ(Selected(), "ant");
    tree->SelectRow(dog, true, true, true);
    EXPECT_EQ(Selected(), "dog");
}

TEST_F(MultiColumnTreeTest, AStarOpensAllBelowInSlicesAndTellsOfItOnce) {
    Fill();
    // Enough for several slices, and deeper than the list above.
    std::vector<Row> parents;
    for (int i = 0; i < 3000; ++i) {
        parents.push_back(Add(ant, "p"));
        Add(parents.back(), "c");
    }
    tree->LayoutAfterAppendRow(ant, true);
    tree->SelectRow(ant, true, true, true);
    for (int press = 0; press < 5; ++press)
        QTest::keyClick(&View(), Qt::Key_Asterisk);
    RunEvents();
    EXPECT_TRUE(tree->IsRowOpen(parents.front()));
    EXPECT_FALSE(tree->IsRowOpen(parents.back())) << "the window answers in between";
    for (int turn = 0; turn < 1000 && !tree->IsRowOpen(parents.back()); ++turn)
        RunEvents();
    EXPECT_TRUE(tree->IsRowOpen(parents.back()));
    EXPECT_TRUE(tree->IsRowOpen(cat));
    EXPECT_EQ(Heard(), "open ant; ");

    QTest::keyClick(&View(), Qt::Key_Left);
    QTest::keyClick(&View(), Qt::Key_Asterisk);
    tree->DeleteAllRows();
    RunEvents();
    EXPECT_EQ(tree->GetRowCount(), 0U);
}

TEST_F(MultiColumnTreeTest, TheRowInFocusIsSeenHoweverDeepItLiesAndNamesEndWhereTheTreeDoes) {
    Fill();
    tree->SetColumnWidth(0, 4 * 300);
    Row deep = ant;
    for (int i = 0; i < 40; ++i)
        deep = Add(deep, "d" + std::to_string(i));
    tree->SelectRow(deep, true, true, true);
    tree->ScrollRowIntoView(deep, false, 0, true);
    RunEvents();
    Drawn();
    auto const width = static_cast<float>(View().viewport()->width());
    auto const height = static_cast<float>(View().viewport()->height());
    auto const& cell = cells.at("d39");
    EXPECT_GE(cell.x, 0);
    EXPECT_GE(cell.width, width / 3);
    EXPECT_LE(cell.x + cell.width, width);
    EXPECT_LE(cell.y + cell.height, height);
    auto const scrolled = tree->GetScrollPosition();
    EXPECT_GT(scrolled.x, 0);

    tree->SetScrollPosition({0, 0});
    EXPECT_EQ(tree->GetScrollPosition(), (moxcore::geom::PointT<float>{0, 0}));
    tree->SetScrollPosition(scrolled);
    EXPECT_EQ(tree->GetScrollPosition(), scrolled);
    Key(Qt::Key_Home);
    EXPECT_EQ(tree->GetScrollPosition(), (moxcore::geom::PointT<float>{0, 0}));
}

TEST_F(MultiColumnTreeTest, AScreenReaderHearsNamesLevelsAndStates) {
    Fill();
    tree->SelectRow(ant, true, true, true);
    auto* const accessible = QAccessible::queryAccessibleInterface(&View());
    ASSERT_EQ(accessible->role(), QAccessible::Tree);
    auto const rowNamed = [&](QString const& name) -> QAccessibleInterface* {
        for (int i = 0; i < accessible->childCount(); ++i)
            if (accessible->child(i)->text(QAccessible::Name) == name) return accessible->child(i);
        return nullptr;
    };
    auto* const row = rowNamed("ant");
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->text(QAccessible::Description), "Level 2");
    EXPECT_TRUE(row->state().selected);
    EXPECT_TRUE(row->state().expandable);
    EXPECT_FALSE(row->state().expanded);
    tree->OpenRow(ant);
    EXPECT_TRUE(rowNamed("ant")->state().expanded);
    EXPECT_FALSE(rowNamed("dog")->state().expandable);
}

TEST_F(MultiColumnTreeTest, IsDrawnAnewWhenItIsToldToBe) {
    Fill();
    Drawn();
    cells.clear();
    tree->UI_Invalidate();
    RunEvents();
    EXPECT_EQ(cells.size(), 3U);
}

TEST_F(MultiColumnTreeTest, MayGoWhileItTellsOfSomething) {
    Fill();
    tree->SelectRow(ant, true, true, true);
    tree->SetRowDisclosureChangedFunction([this](Row const&, bool) {
        window.Container().ChildRequestRemove(tree);
        tree.reset();
    });
    auto& view = View();
    QTest::keyClick(&view, Qt::Key_Asterisk);
    EXPECT_EQ(tree, nullptr);
    RunEvents();
    EXPECT_EQ(ant->GetParentRow(), nullptr);
}

}  // namespace
}  // namespace moxui::controls
