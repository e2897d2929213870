#pragma once

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QTest>
#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_MultiColumnTree.h"
#include "moxui/drawbot/Drawbot.h"
#include "support/Seen.h"
#include "support/TestWindow.h"

namespace moxui::controls {

/// A tree with one column in a window. It notes what the tree notifies of, and what it draws.
class MultiColumnTreeFixture : public ::testing::Test {
protected:
    using Row = UI_MultiColumnTree::RowPtr;

    MultiColumnTreeFixture() {
        tree->SetSingleSelection(true);
        tree->SetEmptySelectionSupported(false);
        tree->SetRowNameFunction(
            [this](Row const& row) { return moxcore::string::AsciiToUTF16(names[row]); });
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
        testsupport::RunEvents();
    }
    QAbstractItemView& View() {
        return static_cast<QAbstractItemView&>(testsupport::WidgetOf(*tree));
    }
    void Key(Qt::Key key) {
        QTest::keyClick(&View(), key);
        testsupport::RunEvents();
    }
    /// The names of the rows that are drawn, from the top.
    std::vector<std::string> Drawn() {
        cells.clear();
        testsupport::RunEvents();
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

    testsupport::TestWindow window;
    boost::intrusive_ptr<UI_MultiColumnTree> tree{new UI_MultiColumnTree(1)};
    std::map<Row, std::string> names;
    std::map<std::string, moxcore::geom::RectT<float>> cells;
    std::string heard;
    Row assets, ant, bee, cat, cow, dog;
};

}  // namespace moxui::controls
