#include "quillomoxui/view/WorkflowLabel.h"

#include <algorithm>

#include "moxcore/string/Conversions.h"
#include "moxui/utility/ResourceManager.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"

namespace quillomoxui::view {

using moxcore::string::AsciiToUTF16;

WorkflowLabel::WorkflowLabel(PictureSupplyHandler const& assetTypeIcon)
    : title(new moxui::controls::UI_StaticText),
      name(new moxui::controls::UI_StaticText),
      icon(new SizedStaticImage),
      moreMenu(new moxui::controls::UI_PicturePopup) {
    title->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/ShareForReview="
             "Share for review:"));
    title->SetFontStyleName("Bold");
    icon->SetImageSupplyFunction(assetTypeIcon);
    moreMenu->SetImageSupplyFunction(
        BindImageSupplyFunction("MoreSmallList_18", &moxui::utility::GetResourceManager));
    moreMenu->SetButtonChromeType(moxui::controls::ButtonChromeType::Quiet);
    moreMenu->AddItem(AsciiToUTF16("Create new link"));
    moreMenu->AddItem(AsciiToUTF16("Sign out of Quillo"));
    moreMenu->UI_SetAccessibleName(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/WorkflowLabel/More=More"));
    AddShown(*this, title);
    AddShown(*this, name);
    AddShown(*this, icon);
    AddShown(*this, moreMenu);
}

WorkflowLabel::~WorkflowLabel() = default;

void WorkflowLabel::SetLabelText(UTF16String const& text) {
    name->SetText(text);
}

moxcore::geom::PointT<float> WorkflowLabel::UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const {
    return {310, 20};
}

void WorkflowLabel::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    UI_SubView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    constexpr float kTextTop = 2.5F;
    constexpr float kTextHeight = 14;
    float const titleWidth = std::min(layout.SizeOf(*title).x, 155.0F);
    float const nameWidth = std::min(layout.SizeOf(*name).x, 111.0F);
    float const x = titleWidth + 8;
    title->UI_SetLocalRectF({0, kTextTop, titleWidth, kTextHeight});
    icon->UI_SetLocalRectF({x, 1, 14, 14});
    name->UI_SetLocalRectF({x + 22, kTextTop, x + nameWidth, kTextHeight});
    moreMenu->UI_SetLocalRectF({292, 1, 18, 18});
}

}  // namespace quillomoxui::view
