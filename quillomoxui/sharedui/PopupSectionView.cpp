#include "quillomoxui/sharedui/PopupSectionView.h"

#include "moxui/skins/ThemeProvider.h"
#include "quillomoxui/sharedui/RecommendedSize.h"
#include "quillomoxui/sharedui/SectionFrame.h"

namespace quillomoxui {

using moxui::ui::UI_SubView;

PopupSectionView::PopupSectionView(boost::intrusive_ptr<UI_SubView> const& contentView,
                                   UTF16String const& label,
                                   PictureSupplyHandler const& iconHandler)
    : header(new PopupSectionHeaderViewImpl(label, iconHandler)) {
    UI_SetNodeID("ShareSectionViewImpl");
    SetSpacing(frameWidth);
    TakeColors();
    header->UI_Show(false);
    ChildPushBack(header);
    ShowContent(contentView);
}

PopupSectionView::~PopupSectionView() = default;

boost::intrusive_ptr<PopupSectionHeaderView> PopupSectionView::GetHeaderView() const {
    return header;
}

boost::intrusive_ptr<UI_SubView> PopupSectionView::GetContentView() const {
    return content;
}

void PopupSectionView::SetContentView(boost::intrusive_ptr<UI_SubView> const& view) {
    ChildRequestRemove(content);
    ShowContent(view);
    auto const size = GetRecommendedSize(this);
    UI_SetLocalRectF({0, 0, size.x, size.y});
}

void PopupSectionView::UI_Draw(moxui::drawbot::Drawbot* drawbot) const {
    for (auto child = ChildBegin(); child != ChildEnd(); ++child)
        drawbot->GetSurface()->PaintRect(backgroundColor, (*child)->UI_GetLocalRectF(true));
    VStackView::UI_Draw(drawbot);
    StrokeAroundChildren(*drawbot, *this, frameColor, frameWidth);
}

void PopupSectionView::UI_ThemeChanged() {
    TakeColors();
}

void PopupSectionView::TakeColors() {
    using moxui::skins::HalcynGrayColor;
    auto const& theme = moxui::skins::ThemeProvider::Get();
    backgroundColor = moxui::skins::utilities::GetHalcynGrayColor(theme, HalcynGrayColor::Level1);
    frameColor = moxui::skins::utilities::GetHalcynGrayColor(theme, HalcynGrayColor::Level4);
}

void PopupSectionView::ShowContent(boost::intrusive_ptr<UI_SubView> const& view) {
    content = view ? view : boost::intrusive_ptr<UI_SubView>(new UI_SubView);
    content->UI_Show(true);
    ChildPushBack(content);
}

}  // namespace quillomoxui
