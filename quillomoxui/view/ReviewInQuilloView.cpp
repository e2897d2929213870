#include "quillomoxui/view/ReviewInQuilloView.h"

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {
namespace {

using moxui::controls::UI_Popup;
using utility::WeakBindMemberFunction;

constexpr char kSelectLocation[] =
    "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/SelectQuilloLocation="
    "Select Quillo Location...";
constexpr char kLocationGone[] =
    "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/LocationGone="
    "The folder is gone, select another...";
constexpr char kLocationGoneTip[] =
    "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/LocationGoneTip="
    "The folder that was selected is gone. Select another location to share to.";

/// The presets, as the menu shows them.
std::vector<std::string> PresetNames() {
    std::vector<std::string> names{std::string()};
    for (char const* const text :
         {"$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/Web720=Web 720",
          "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/Web1080=Web 1080",
          "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/Web4k=Web 4k",
          "$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/ProRes422=ProRes 422"})
        names.push_back(moxcore::string::UTF16to8(Text(text)));
    return names;
}

}  // namespace

ReviewInQuilloView::ReviewInQuilloView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      workflowLabel(new WorkflowLabel(viewModel->GetAssetTypeIcon())),
      locationCaption(new moxui::controls::UI_StaticText),
      locationLink(new moxui::controls::UI_HotTextButton(Text(kSelectLocation))),
      shareButton(new sharedui::CallToActionButton) {
    RetainBinding(static_cast<ActiveAssetNameNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(workflowLabel.get(),
                                                               &WorkflowLabel::SetLabelText)));
    locationCaption->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/Location=Location:"));

    RetainBinding(
        static_cast<UserNotifyingPropertyHost&>(*viewModel)
            .BindValueChanged(WeakBindMemberFunction(this, &ReviewInQuilloView::OnUserChanged)));
    OnUserChanged(viewModel->GetUser());
    locationLink->SetTruncationMode(moxui::drawbot::TruncationMode::Start);
    RegisterMouseNotifications(locationLink, LocationTarget());

    presetPicker = CreatePresetPicker(PresetNames(), 3);
    shareButton->SetFontStyleName("Bold");
    shareButton->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/ReviewInQuilloView/Share=Share"));
    shareButton->UI_SetEnabled(true);
    shareButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &ReviewInQuilloView::OnShareClicked));

    AddShown(*this, workflowLabel);
    AddShown(*this, locationCaption);
    AddShown(*this, locationLink);
    AddShown(*this, presetPicker);
    AddShown(*this, shareButton);
    UI_Show(true);
}

ReviewInQuilloView::~ReviewInQuilloView() = default;

moxcore::geom::PointT<float> ReviewInQuilloView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, 105};
}

void ReviewInQuilloView::UI_SizeChanged(moxcore::geom::RectT<float> const& rect) {
    PopupBaseView::UI_SizeChanged(rect);
    Layout const layout(*this);
    if (!layout) return;
    constexpr float kMargin = 15;
    constexpr float kGap = 2;
    auto const labelSize = layout.PlaceAt(*workflowLabel, kMargin, 10);
    float const locationTop = labelSize.y + 22;
    auto const captionSize = layout.PlaceAt(*locationCaption, kMargin, locationTop);
    locationLink->UI_SetLocalRectF({captionSize.x + kMargin + kGap, locationTop,
                                    rect.width - 2 * kMargin - captionSize.x,
                                    layout.SizeOf(*locationLink).y});

    float const secondRowTop = locationTop + captionSize.y + 13;
    layout.PlaceAt(*presetPicker, kMargin + 1, secondRowTop);
    layout.PlaceAt(*shareButton, rect.width - kMargin - layout.SizeOf(*shareButton).x,
                   secondRowTop);
}

boost::intrusive_ptr<UI_Popup> ReviewInQuilloView::CreatePresetPicker(
    std::vector<std::string> const& items, long selected) {
    auto const heading = Text(
        "$$$/Vistrel/quillomoxui/view/QuilloShare/PresetSettingsPopup/Heading=Preset Settings");
    boost::intrusive_ptr<UI_Popup> picker(new UI_Popup(0, false));
    picker->SetPickerMeasureStrategy(moxui::controls::PickerMeasureStrategy::WidestItem);
    picker->SetButtonChromeType(moxui::controls::ButtonChromeType::Quiet);
    picker->AddHeading(heading);
    for (auto const& item : items)
        picker->AddItem(moxcore::string::UTF8to16(item));
    picker->SetValue(static_cast<int>(selected));
    picker->UI_SetAccessibleName(heading);
    moxcore::utility::RefCountedWeakPtr<PopupBaseView> const weakSelf(this);
    picker->SetPreShowPopupMenuFunction([weakSelf](UI_Popup&) {
        if (auto const self = weakSelf.Lock()) self->SetPreShowPopupMenu();
    });
    picker->SetPostShowPopupMenuFunction([weakSelf](UI_Popup&) {
        if (auto const self = weakSelf.Lock()) self->SetPostShowPopupMenu();
    });
    return picker;
}

void ReviewInQuilloView::OnUserChanged(std::shared_ptr<QuilloUser> const& user) {
    // One that has been replaced since is nobody's business any more.
    if (user != ViewModel().GetUser()) return;
    locationLink->UI_SetToolTip({}, 400);
    selectionBinding = static_cast<SelectionPathNotifyingPropertyHost&>(*user).BindValueChanged(
        WeakBindMemberFunction(this, &ReviewInQuilloView::OnSelectionChanged));
}

void ReviewInQuilloView::OnSelectionChanged(UTF16String const&) {
    auto const user = ViewModel().GetUser();
    if (user->GetSelection()) {
        auto const path = user->GetSelectionPath();
        locationLink->SetText(path);
        locationLink->UI_SetToolTip(path, 400);
    } else if (auto const lost = user->GetLostSelectionPath(); !lost.empty()) {
        locationLink->SetText(Text(kLocationGone));
        auto tip = Text(kLocationGoneTip);
        tip += moxcore::string::AsciiToUTF16("\n");
        locationLink->UI_SetToolTip(tip + lost, 400);
    } else {
        locationLink->SetText(Text(kSelectLocation));
    }
    UI_SizeChanged(UI_GetLocalRectF(false));
}

ShareForReviewViewID ReviewInQuilloView::LocationTarget() const {
    return ViewModel().GetUser()->GetSelection() ? ShareForReviewViewID::SelectFolder
                                                 : ShareForReviewViewID::SelectProject;
}

bool ReviewInQuilloView::OnMouseEvent(moxui::ui::UI_Node* node, moxui::ui::MouseEvent const& event,
                                      bool& handled, ShareForReviewViewID) {
    return PopupBaseView::OnMouseEvent(node, event, handled, LocationTarget());
}

void ReviewInQuilloView::OnShareClicked(moxui::ui::Message*) {
    ViewModel().ProcessAssetForReview();
}

}  // namespace quillomoxui::view
