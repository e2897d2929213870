#include "quillomoxui/sharedui/PopupSectionHeaderView.h"

#include "moxui/drawbot/Drawbot.h"
#include "moxui/skins/ThemeProvider.h"

namespace quillomoxui {
namespace {

moxui::drawbot::ColorRGBA BackgroundColor() {
    using moxui::skins::HalcynGrayColor;
    using namespace moxui::skins::utilities;
    auto const& theme = moxui::skins::ThemeProvider::Get();
    return Blend(GetHalcynGrayColor(theme, HalcynGrayColor::Level0),
                 GetHalcynGrayColor(theme, HalcynGrayColor::Level1), 0.4F);
}

}  // namespace

PopupSectionHeaderView::PopupSectionHeaderView() = default;
PopupSectionHeaderView::~PopupSectionHeaderView() = default;

PopupSectionHeaderViewImpl::PopupSectionHeaderViewImpl(UTF16String const& text,
                                                       PictureSupplyHandler const& iconHandler)
    : icon(new SizedStaticImage),
      label(new moxui::controls::UI_StaticText),
      backgroundColor(BackgroundColor()) {
    UI_SetNodeID("ShareSectionHeaderViewImpl");
    SetPadding({.top = 6, .left = 14, .bottom = 6, .right = 14});
    SetSpacing(3);
    icon->SetImageSupplyFunction(iconHandler);
    label->SetText(text);
    for (auto const& child :
         std::initializer_list<boost::intrusive_ptr<moxui::ui::UI_SubView>>{icon, label}) {
        child->UI_Show(true);
        ChildPushBack(child);
    }
}

PopupSectionHeaderViewImpl::~PopupSectionHeaderViewImpl() = default;

void PopupSectionHeaderViewImpl::SetLabelText(UTF16String const& text) {
    label->SetText(text);
}

void PopupSectionHeaderViewImpl::SetIconImageSupplyFunction(PictureSupplyHandler const& handler) {
    icon->SetImageSupplyFunction(handler);
}

void PopupSectionHeaderViewImpl::UI_Draw(moxui::drawbot::Drawbot* drawbot) const {
    drawbot->GetSurface()->PaintRect(backgroundColor, UI_GetLocalRectF(false));
    PopupSectionHeaderView::UI_Draw(drawbot);
}

void PopupSectionHeaderViewImpl::UI_ThemeChanged() {
    backgroundColor = BackgroundColor();
}

}  // namespace quillomoxui
