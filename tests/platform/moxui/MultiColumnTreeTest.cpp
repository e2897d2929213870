#include "moxui/controls/UI_MultiColumnTree.h"

#include <gmock/gmock.h>

#include <QAbstractItemView>
#include <QAccessible>
#include <QScrollBar>
#include <QTest>
#include <map>

#include "moxcore/string/Conversions.h"
#include "moxui/drawbot/Drawbot.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {
namespace {

using moxcore::string::AsciiToUTF16;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testsupport::RunEvents;
using testsupport::TestWindow;
using testsupport::WidgetOf;
using Row = UI_MultiColumnTree::RowPtr;

class MultiColumnTreeTest : public ::testing::Test {
protected:
    MultiColumnTreeTest() {
        tree->SetSingleSelection(true);
        tree->SetEmptySelectionSupported(false);
        tree->SetRowNameFunction([this](Row const& row) { return AsciiToUTF16(names[row]); });
        tree->SetRowsSelectionChangedFunction([this](std::vector<Row> const& rows) {
            for (auto const& row : rows)
                heard += "select " + names[row] + "; ";
        });
        tree->SetRowDisclosureChangedFunction([this](Row const& row, bool open) {
            heard += (open ? "open " : "close ") + names[row] + "; ";
        });
        tree->SetDrawCellFunction([this](drawbot::Drawbot* drawbot, Row const& row, int column,
                                         moxcore::geom::RectT<float> const& cell) {
            EXPECT_NE(drawbot->GetSurface(), nullptr);
            EXPECT_EQ(column, 0);
            cells[names[row]] = cell;
        });
        window.Add(tree, {0, 0, 300, 200});
    }

    Row Add(Row const& parent, std::string const& name, bool open = false) {
        auto const row = tree->CreateAndAppendRow(parent, true, open);
        names[row] = name;
        return row;
    }
    /// Assets > (ant > (bee, cat > cow), dog, <count> more); Assets is open.
    void Fill(int count = 0) {
        assets = Add(nullptr, "Assets", true);
        ant = Add(assets, "ant");
        bee = Add(ant, "bee");
        cat = Add(ant, "cat");
        cow = Add(cat, "cow");
        dog = Add(assets, "dog");
        for (int i = 0; i < count; ++i)
            Add(assets, "more" + std::to_string(i));
        tree->LayoutAfterAppendRow(assets, true);
        tree->UI_SetFocus();
        RunEvents();
    }
    QAbstractItemView& View() { return static_cast<QAbstractItemView&>(WidgetOf(*tree)); }
    void Key(Qt::Key key) {
        QTest::keyClick(&View(), key);
        RunEvents();
    }
    /// The names of the rows that are drawn, from the top.
    std::vector<std::string> Drawn() {
        cells.clear();
        RunEvents();
        static_cast<void>(testsupport::PictureOf(View()));
        std::vector<std::string> drawn;
        for (auto const& [name, cell] : cells)
            drawn.push_back(name);
        std::sort(drawn.begin(), drawn.end(),
                  [this](auto const& a, auto const& b) { return cells[a].y < cells[b].y; });
        return drawn;
    }
    std::string Selected() {
        std::string selected;
        for (auto const& row : tree->GetSelectedRows())
            selected += names[row];
        return selected;
    }
    std::string Heard() { return std::exchange(heard, {}); }

    TestWindow window;
    boost::intrusive_ptr<UI_MultiColumnTree> tree{new UI_MultiColumnTree(1)};
    std::map<Row, std::string> names;
    std::map<std::string, moxcore::geom::RectT<float>> cells;
    std::string heard;
    Row assets, ant, bee, cat, cow, dog;
};

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

TEST_F(MultiColumnTreeTest, IsMirroredWhereTheLayoutGoesFromRightToLeft) {
    auto const picture = testsupport::ToolkitPicture("QuilloFolder_Sm");
    UI_PictureSupplyMessage message;
    (*picture)(&message);
    drawbot::ColorRGBA const red{1, 0, 0, 1};
    using Rect = moxcore::geom::RectT<float>;
    std::function<void(drawbot::Drawbot&, Rect const&)> const draws[] = {
        [&](auto& bot, auto& cell) {
            bot.GetSurface()->PaintRect(red, {cell.x, cell.y, 40, 9});
        },
        [&](auto& bot, auto& cell) {
            auto const path = bot.GetSupplier()->NewPath();
            path->AddRect({cell.x + 5, cell.y, 40, 9});
            bot.GetSurface()->FillPath(red, *path);
        },
        [&](auto& bot, auto& cell) {
            bot.GetSurface()->DrawImage(*message.GetPicture(), {cell.x, cell.y}, 1);
        },
        [&](auto& bot, auto& cell) {
            auto const font = bot.GetSupplier()->NewFont("", 12, "");
            bot.GetSurface()->DrawString(red, *font, AsciiToUTF16("HHHH"), {cell.x, cell.y + 12});
        },
        [&](auto& bot, auto& cell) {
            bot.GetSurface()->PushClip({cell.x, cell.y, 30, 30});
            bot.GetSurface()->PaintRect(red, {cell.x - 20, cell.y, 90, 9});
            bot.GetSurface()->PopClip();
        },
    };
    Add(nullptr, "leaf");
    for (auto const& draw : draws) {
        tree->SetDrawCellFunction(
            [&](drawbot::Drawbot* bot, Row const&, int, Rect const& cell) { draw(*bot, cell); });
        QRect inks[2];
        for (auto const direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            View().setLayoutDirection(direction);
            RunEvents();
            inks[direction] = testsupport::InkOf(testsupport::PictureOf(View()));
        }
        EXPECT_LT(inks[Qt::LeftToRight].right(), 100);
        EXPECT_EQ(inks[Qt::RightToLeft].size(), inks[Qt::LeftToRight].size());
        EXPECT_NEAR(inks[Qt::RightToLeft].right(), 299 - inks[Qt::LeftToRight].left(), 2);
    }
}

TEST_F(MultiColumnTreeTest, IsWorkedInItsDirection) {
    Fill();
    View().setLayoutDirection(Qt::RightToLeft);
    Key(Qt::Key_Home);
    Key(Qt::Key_Down);
    Heard();
    Key(Qt::Key_Left);
    Key(Qt::Key_Right);
    auto const row = View().visualRect(View().currentIndex());
    // Rows begin at the right: the arrow of a row of the second level is the second one from there.
    QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, QPoint(300 - 24, row.center().y()));
    EXPECT_EQ(Heard(), "open ant; close ant; open ant; ");
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
