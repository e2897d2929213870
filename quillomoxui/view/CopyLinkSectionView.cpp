#include "quillomoxui/view/CopyLinkSectionView.h"

#include <algorithm>
#include <initializer_list>

#include "moxui/datatransfer/ClipboardSendData.h"
#include "moxui/sharedui/UI_ToastManager.h"
#include "moxui/skins/ThemeProvider.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"
#include "quillomoxui/utility/GetResourceManager.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillomoxui/view/Layout.h"
#include "quillomoxui/view/Texts.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::view {

using moxui::controls::DisplayWhen;
using utility::WeakBindMemberFunction;

CopyLinkSectionView::CopyLinkSectionView(std::shared_ptr<ShareForReviewViewModel> const& viewModel)
    : PopupBaseView(viewModel),
      link(new moxui::controls::UI_HotTextURL(UTF16String())),
      copyButton(new moxui::controls::UI_PictureTextButton),
      workflowLabel(new WorkflowLabel(viewModel->GetAssetTypeIcon())),
      settingsButton(new moxui::controls::UI_PictureButton),
      ready(new moxui::controls::UI_StaticText(
          Text("$$$/Vistrel/quillomoxui/view/QuilloShare/CopyLinkSectionView/Ready="
               "The review link is ready."))) {
    auto const address = viewModel->GetReviewLinkURL();
    link->SetTruncationMode(moxui::drawbot::TruncationMode::End);
    link->SetURL(address);
    link->SetText(address);

    auto const icon = BindImageSupplyFunction("S_Copy_16", &utility::GetResourceManager);
    copyButton->SetText(
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/CopyLinkSectionView/CopyLink=Copy link"));
    copyButton->SetImageSupplyFunction(icon);
    copyButton->SetContainerDisplay(DisplayWhen::Always);
    copyButton->SetBorderDisplay(DisplayWhen::Always);
    copyButton->SetSpringLoaded(true);
    copyButton->SetCommitAppearance(false);
    copyButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &CopyLinkSectionView::OnCopyButtonChange));

    settingsButton->SetImageSupplyFunction(icon);
    settingsButton->UI_SetAccessibleName(Text(
        "$$$/Vistrel/quillomoxui/view/QuilloShare/CopyLinkSectionView/Settings=Link settings"));
    settingsButton->NotifyWhenChanged(
        WeakBindMemberFunction(this, &CopyLinkSectionView::OnLinkSettingsClicked));

    RetainBinding(static_cast<ActiveAssetNameNotifyingPropertyHost&>(*viewModel)
                      .BindValueChanged(WeakBindMemberFunction(workflowLabel.get(),
                                                               &WorkflowLabel::SetLabelText)));

    ready->SetStatus();

    // As they are read: the label stands above the link.
    for (auto const& child : std::initializer_list<boost::intrusive_ptr<moxui::ui::UI_SubView>>{
             ready, workflowLabel, link, copyButton, settingsButton})
        AddShown(*this, child);
    UI_Show(true);
}

CopyLinkSectionView::~CopyLinkSectionView() = default;

moxcore::geom::PointT<float> CopyLinkSectionView::UI_GetRecommendedSize(
    moxui::drawbot::Drawbot*) const {
    return {340, 75};
}

void CopyLinkSectionView::UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) {
    PopupBaseView::UI_SetLocalRectF(rect);
    Layout const layout(*this);
    if (!layout) return;
    float const y = layout.PlaceAt(*workflowLabel, 15, 10).y + 22.5F;
    // The button grows with a text that its place does not hold, at the cost of the link, which is
    // elided.
    constexpr float kLeastPadding = 3;
    auto const padding =
        moxui::skins::ThemeProvider::Get().GetSize(moxui::skins::ThemeSize::ControlPadding);
    float const copyWidth =
        std::max(layout.SizeOf(*copyButton).x - 2 * (padding - kLeastPadding), 84.0F);
    float const copyLeft = rect.width - 36 - copyWidth;
    ready->UI_SetLocalRectF({0, 0, 0, 0});
    link->UI_SetLocalRectF({15, y, std::min(layout.SizeOf(*link).x, copyLeft - 24), 20});
    settingsButton->UI_SetLocalRectF({rect.width - 31, y + 2, 16, 16});
    copyButton->UI_SetLocalRectF({copyLeft, y, copyWidth, 20});
}

void CopyLinkSectionView::OnCopyButtonChange(moxui::ui::Message*) {
    auto const data = moxui::datatransfer::NewClipboardSendData();
    data->PutText(link->GetURL());
    data->SendToSystemClipboard();
    moxui::sharedui::UI_ToastManager::GetDefaultInstance()->DisplayToastMessage(
        moxui::ui::GetMainTopLevelWindow(),
        Text("$$$/Vistrel/quillomoxui/view/QuilloShare/Copied=Copied"),
        moxui::sharedui::kToastManager_DefaultDurationInSeconds,
        moxui::sharedui::kToastManager_DefaultPriority);
}

void CopyLinkSectionView::OnLinkSettingsClicked(moxui::ui::Message*) {}

}  // namespace quillomoxui::view
