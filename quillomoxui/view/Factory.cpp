#include "quillomoxui/view/Factory.h"

#include "quillomoxui/view/CopyLinkSectionView.h"
#include "quillomoxui/view/DebugView.h"
#include "quillomoxui/view/EncodingProgressView.h"
#include "quillomoxui/view/LocationPickerView.h"
#include "quillomoxui/view/ReviewInQuilloView.h"
#include "quillomoxui/view/SigninPromptView.h"

namespace quillomoxui::view::factory {

boost::intrusive_ptr<PopupBaseView> CreateView(
    ShareForReviewViewID id, std::shared_ptr<ShareForReviewViewModel> const& viewModel) {
    switch (id) {
        case ShareForReviewViewID::DebugView:
            return new DebugView(viewModel);
        case ShareForReviewViewID::SelectProject:
        case ShareForReviewViewID::SelectFolder:
            return new LocationPickerView(viewModel);
        case ShareForReviewViewID::ReviewInQuillo:
            return new ReviewInQuilloView(viewModel);
        case ShareForReviewViewID::SigninPrompt:
            return new SigninPromptView(viewModel);
        case ShareForReviewViewID::CopyLinkSection:
            return new CopyLinkSectionView(viewModel);
        case ShareForReviewViewID::WaitingInQueue:
        case ShareForReviewViewID::EncodingProgress:
        case ShareForReviewViewID::UploadInProgress:
            return new EncodingProgressView(viewModel);
        case ShareForReviewViewID::None:
        case ShareForReviewViewID::Initial:
            break;
    }
    return nullptr;
}

}  // namespace quillomoxui::view::factory
