#include "quillomoxui/sharedui/PopupMainView.h"

#include "moxui/skins/ThemeProvider.h"
#include "quillomoxui/sharedui/SectionFrame.h"

namespace quillomoxui {
namespace {

moxui::drawbot::ColorRGBA FrameColor() {
    return moxui::skins::utilities::GetHalcynGrayColor(moxui::skins::ThemeProvider::Get(),
                                                       moxui::skins::HalcynGrayColor::Level4);
}

}  // namespace

PopupMainView::PopupMainView() : frameColor(FrameColor()) {
    UI_SetNodeID("PopupMainView");
    SetPadding(frameWidth);
    SetSpacing(frameWidth);
}

PopupMainView::~PopupMainView() = default;

void PopupMainView::MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& target) {
    for (auto child = ChildBegin(); child != ChildEnd(); ++child) {
        auto* const section = dynamic_cast<PopupSectionView*>(child->get());
        if (!section) continue;
        if (target) section->GetHeaderView()->UI_Show(false);
        section->UI_Show(!target || target == section);
    }
}

void PopupMainView::UI_Draw(moxui::drawbot::Drawbot* drawbot) const {
    VStackView::UI_Draw(drawbot);
    StrokeAroundChildren(*drawbot, *this, frameColor, frameWidth);
}

void PopupMainView::UI_ThemeChanged() {
    frameColor = FrameColor();
}

boost::intrusive_ptr<PopupSectionView> InsertSection(
    PopupMainView& mainView, std::size_t index,
    boost::intrusive_ptr<moxui::ui::UI_SubView> const& content, bool show) {
    boost::intrusive_ptr<PopupSectionView> section(
        new PopupSectionView(content, UTF16String(), nullptr));
    section->UI_Show(show);
    mainView.ChildInsert(index, section);
    return section;
}

}  // namespace quillomoxui
