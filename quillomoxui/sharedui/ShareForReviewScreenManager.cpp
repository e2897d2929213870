#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"

#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/PopupSectionView.h"
#include "quillomoxui/utility/BindingTarget.h"
#include "quillomoxui/view/Factory.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui {
namespace {

class ShareForReviewScreenManagerImpl : public ShareForReviewScreenManager,
                                        public utility::BindingTarget {
public:
    ShareForReviewScreenManagerImpl(std::shared_ptr<ShareForReviewViewModel> const& viewModel,
                                    std::shared_ptr<PopupManager> const& popupManager)
        : viewModel(viewModel),
          popupManager(popupManager),
          section(popupManager->InsertPopupSection(0, new moxui::ui::UI_SubView)) {}

    void CreateBindings() {
        auto const self = SharedAs<ShareForReviewScreenManagerImpl>();
        RetainBinding(
            static_cast<CurrentViewIDNotifyingPropertyHost&>(*viewModel)
                .BindValueChanged(self, &ShareForReviewScreenManagerImpl::OnCurrentViewIDChanged));
    }

private:
    void OnCurrentViewIDChanged(ShareForReviewViewID id) {
        if (id == ShareForReviewViewID::None) return popupManager->HideWindow();
        ShowPopupView(view::factory::CreateView(id, viewModel));
        // While a location is being picked, the picker fills the popup alone.
        bool const picks =
            id == ShareForReviewViewID::SelectProject || id == ShareForReviewViewID::SelectFolder;
        popupManager->MaximizePopupSection(picks ? section : nullptr);
    }

    void ShowPopupView(boost::intrusive_ptr<view::PopupBaseView> const& view) {
        section->SetContentView(view);
        popupManager->ShowWindow();
    }

    std::shared_ptr<ShareForReviewViewModel> viewModel;
    std::shared_ptr<PopupManager> popupManager;
    boost::intrusive_ptr<PopupSectionView> section;
};

}  // namespace

ShareForReviewScreenManager::~ShareForReviewScreenManager() = default;

std::shared_ptr<ShareForReviewScreenManager> CreateShareForReviewScreenManager(
    std::shared_ptr<ShareForReviewViewModel> const& viewModel,
    std::shared_ptr<PopupManager> const& popupManager) {
    auto manager = std::make_shared<ShareForReviewScreenManagerImpl>(viewModel, popupManager);
    manager->CreateBindings();
    popupManager->AddNotifyOnCommit(
        [weakViewModel = std::weak_ptr<ShareForReviewViewModel>(viewModel)] {
            if (auto const alive = weakViewModel.lock())
                alive->SetCurrentViewID(ShareForReviewViewID::None);
        });
    return manager;
}

}  // namespace quillomoxui
