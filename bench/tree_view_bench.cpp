// What it costs to rebuild a tree that is shown in a window: all rows go, all rows come, the way to
// the selected one is opened, it is selected, scrolled into view and drawn. Beside it a bare
// QTreeView over a hand-written model of the same rows, which is filled as fast as a model can be
// and then announced at once.
//
// Shapes: "flat", all rows are children of one open row, so that the view has to lay all out; and
// "nested", each row has up to ten children, as folders do, and only the way to one is open.

#include <benchmark/benchmark.h>

#include <QAbstractItemModel>
#include <QApplication>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_MultiColumnTree.h"
#include "moxui/drawbot/Utilities.h"

namespace {

using moxui::controls::UI_MultiColumnTree;
using Row = UI_MultiColumnTree::RowPtr;
using moxcore::string::UTF16String;

constexpr int kWidth = 340;
constexpr int kHeight = 264;
constexpr std::size_t kChildrenWhenNested = 10;

enum Shape { Flat, Nested };

/// The place among all rows of the parent of the row at `place`; rows are in breadth-first order.
std::size_t ParentOf(std::size_t place, Shape shape) {
    return shape == Flat ? 0 : (place - 1) / kChildrenWhenNested;
}

/// The row that is selected, and the ones above it, from the top.
std::vector<std::size_t> WayTo(std::size_t selected, Shape shape) {
    std::vector<std::size_t> way{selected};
    while (way.front() > 0)
        way.insert(way.begin(), ParentOf(way.front(), shape));
    return way;
}

std::string NameOf(std::size_t place) {
    return "Folder " + std::to_string(place);
}

void Require(bool holds, char const* what) {
    if (holds) return;
    std::fprintf(stderr, "tree_view_bench: %s\n", what);
    std::exit(1);
}

/// Has everything done that is due, drawing included.
void Settle(QWidget& window) {
    QCoreApplication::processEvents();
    window.repaint();
}

/// Ours, used as a folder picker uses it.
class OurTree {
public:
    OurTree() : container(moxui::backend::FillWidget(&window)) {
        tree->SetSingleSelection(true);
        tree->SetEmptySelectionSupported(false);
        tree->SetRowNameFunction([](Row const&) { return UTF16String(); });
        tree->SetDrawCellFunction([this](moxui::drawbot::Drawbot* drawbot, Row const& row, int,
                                         moxcore::geom::RectT<float> const& cell) {
            auto const font =
                drawbot->GetSupplier()->NewFont(tree->GetFontName(0), tree->GetFontSize(0), "");
            // What is seen is near the last row.
            auto const place = static_cast<std::size_t>(
                rows.rend() - std::find(rows.rbegin(), rows.rend(), row) - 1);
            drawbot->GetSurface()->DrawString(
                tree->GetColor(moxui::skins::ThemeColor::kText), *font,
                moxui::drawbot::TruncateString(*font, moxcore::string::AsciiToUTF16(NameOf(place)),
                                               cell.width, moxui::drawbot::TruncationMode::End),
                {cell.x, cell.y + cell.height - 6});
            ++drawn;
        });
        container->ChildPushBack(tree);
        window.resize(kWidth, kHeight);
        tree->UI_SetLocalRectF({0, 0, kWidth, kHeight});
        tree->SetColumnWidth(0, 4 * kWidth);
        tree->UI_Show(true);
        window.show();
        QCoreApplication::processEvents();
    }

    void Rebuild(std::size_t count, Shape shape) {
        rows.clear();
        drawn = 0;
        tree->DeleteAllRows();
        rows.reserve(count);
        rows.push_back(tree->CreateAndAppendRow(nullptr, true, false));
        for (std::size_t i = 1; i < count; ++i)
            rows.push_back(tree->CreateAndAppendRow(rows[ParentOf(i, shape)], true, false));
        tree->LayoutAfterAppendRow(rows.front(), true);
        auto const way = WayTo(count - 1, shape);
        for (std::size_t i = 0; i + 1 < way.size(); ++i)
            tree->OpenRow(rows[way[i]]);
        tree->SelectRow(rows.back(), true, true, true);
        tree->ScrollRowIntoView(rows.back(), false, 0, true);
        Settle(window);
        Require(drawn > 5 && tree->IsRowSelected(rows.back()), "our tree was not drawn");
    }

private:
    QWidget window;
    boost::intrusive_ptr<moxui::ui::OS_ViewContainer> container;
    boost::intrusive_ptr<UI_MultiColumnTree> tree{new UI_MultiColumnTree(1)};
    std::vector<Row> rows;
    int drawn = 0;
};

/// The least that a program with Qt has to write: nodes that own their children.
class BareModel : public QAbstractItemModel {
public:
    struct Node {
        Node* parent = nullptr;
        int row = 0;
        std::size_t place = 0;
        std::vector<std::unique_ptr<Node>> children;
    };

    void Rebuild(std::size_t count, Shape shape) {
        beginResetModel();
        root.children.clear();
        nodes.clear();
        nodes.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            auto& parent = i == 0 ? root : *nodes[ParentOf(i, shape)];
            auto node = std::make_unique<Node>();
            node->parent = &parent;
            node->row = static_cast<int>(parent.children.size());
            node->place = i;
            nodes.push_back(node.get());
            parent.children.push_back(std::move(node));
        }
        endResetModel();
    }

    QModelIndex IndexOf(std::size_t place) const {
        return createIndex(nodes[place]->row, 0, nodes[place]);
    }

    QModelIndex index(int row, int column, QModelIndex const& parent) const override {
        auto const& children = At(parent).children;
        if (row < 0 || static_cast<std::size_t>(row) >= children.size()) return {};
        return createIndex(row, column, children[static_cast<std::size_t>(row)].get());
    }
    QModelIndex parent(QModelIndex const& child) const override {
        auto* const above = At(child).parent;
        return above == &root ? QModelIndex() : createIndex(above->row, 0, above);
    }
    int rowCount(QModelIndex const& parent) const override {
        return static_cast<int>(At(parent).children.size());
    }
    int columnCount(QModelIndex const&) const override { return 1; }
    QVariant data(QModelIndex const& index, int role) const override {
        if (role != Qt::DisplayRole) return {};
        return QString::fromStdString(NameOf(At(index).place));
    }

private:
    Node const& At(QModelIndex const& index) const {
        return index.isValid() ? *static_cast<Node const*>(index.internalPointer()) : root;
    }

    Node root;
    std::vector<Node*> nodes;
};

class BareTree {
public:
    BareTree() {
        auto* const layout = new QVBoxLayout(&window);
        layout->setContentsMargins({});
        layout->addWidget(&view);
        view.setHeaderHidden(true);
        view.setUniformRowHeights(true);
        view.setModel(&model);
        window.resize(kWidth, kHeight);
        window.show();
        QCoreApplication::processEvents();
    }
    ~BareTree() { view.setParent(nullptr); }

    void Rebuild(std::size_t count, Shape shape) {
        model.Rebuild(count, shape);
        auto const way = WayTo(count - 1, shape);
        for (std::size_t i = 0; i + 1 < way.size(); ++i)
            view.expand(model.IndexOf(way[i]));
        auto const selected = model.IndexOf(count - 1);
        view.setCurrentIndex(selected);
        view.scrollTo(selected);
        Settle(window);
        Require(view.viewport()->rect().contains(view.visualRect(selected).topLeft()),
                "the bare tree was not scrolled");
    }

private:
    QWidget window;
    BareModel model;
    QTreeView view;
};

template <class Tree>
void Rebuild(benchmark::State& state) {
    Tree tree;
    auto const count = static_cast<std::size_t>(state.range(0));
    auto const shape = static_cast<Shape>(state.range(1));
    tree.Rebuild(count, shape);
    for (auto _ : state)
        tree.Rebuild(count, shape);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"rows", "nested"})->Unit(benchmark::kMillisecond);
    for (int const shape : {Flat, Nested})
        for (int const rows : {10'000, 100'000})
            benchmark->Args({rows, shape});
}

BENCHMARK(Rebuild<OurTree>)->Name("our_tree")->Apply(Sizes);
BENCHMARK(Rebuild<BareTree>)->Name("bare_QTreeView")->Apply(Sizes);

}  // namespace

int main(int argumentCount, char** arguments) {
    qputenv("QT_NO_GLIB", "1");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const application(argumentCount, arguments);
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
