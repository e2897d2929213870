#include "host/gallery/Specimen.h"
#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_MultiColumnTree.h"
#include "moxui/controls/UI_ScrollView.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/drawbot/Drawbot.h"
#include "moxui/skins/ThemeProvider.h"

namespace quillogallery {
namespace {

using namespace moxui;
using namespace moxui::controls;
using moxcore::string::UTF8to16;

boost::intrusive_ptr<UI_ControlView> MakeTree() {
    boost::intrusive_ptr<UI_MultiColumnTree> tree(new UI_MultiColumnTree);
    auto const name = [](UI_MultiColumnTree::RowPtr const& row) {
        return UTF8to16(row->GetParentRow() ? "Rough cut" : "Reel");
    };
    tree->SetRowNameFunction(name);
    tree->SetDrawCellFunction([name](drawbot::Drawbot* drawbot,
                                     UI_MultiColumnTree::RowPtr const& row, int,
                                     moxcore::geom::RectT<float> const& cell) {
        auto const& theme = skins::ThemeProvider::Get();
        auto const font =
            drawbot->GetSupplier()->NewFont(theme.GetFontName(0), theme.GetFontSize(0), "");
        drawbot->GetSurface()->DrawString(
            theme.GetColor(skins::ThemeColor::kText), *font, name(row),
            {cell.x, cell.y + (cell.height - font->GetHeight()) / 2 + font->GetAscent()});
    });
    tree->SetColumnWidth(0, 160);
    for (int i = 0; i < 3; ++i) {
        auto const row = tree->CreateAndAppendRow(nullptr, true, i == 0);
        tree->CreateAndAppendRow(row, true, false);
        tree->CreateAndAppendRow(row, true, false);
        if (i == 1) tree->SelectRow(row, true, true, true);
    }
    return tree;
}

boost::intrusive_ptr<UI_ControlView> MakeScrollView() {
    boost::intrusive_ptr<UI_ScrollView> view(new UI_ScrollView(UI_ScrollView::kVerticalOnly));
    for (int i = 0; i < 8; ++i) {
        boost::intrusive_ptr<UI_StaticText> row(
            new UI_StaticText(UTF8to16("Project " + std::to_string(i + 1))));
        view->GetContentView()->ChildPushBack(row);
        row->UI_SetLocalRectF({6, static_cast<float>(i) * 20, 120, 20});
        row->UI_SetFocusable(true, ui::AccessibleRole::ListItem);
        row->UI_Show(true);
    }
    view->SetContentRect({0, 0, 150, 160});
    view->Update();
    return view;
}

}  // namespace

Kind Lists() {
    return {"lists",
            {{.name = "Tree", .make = MakeTree, .size = {150, 110}},
             {.name = "Scrolled rows", .make = MakeScrollView, .size = {150, 90}}}};
}

}  // namespace quillogallery
