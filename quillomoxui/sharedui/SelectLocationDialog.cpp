#include "quillomoxui/sharedui/SelectLocationDialog.h"

#include <exception>
#include <utility>
#include <vector>

#include "quillomoxui/model/Backends.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/PopupSectionView.h"
#include "quillomoxui/view/DialogManager.h"
#include "quillomoxui/view/LocationPickerView.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui::sharedui {
namespace {

/// One call: whose location is asked for, and the answer.
class Request {
public:
    Request(std::shared_ptr<QuilloUser> const& user, SelectLocationCallback const& callback)
        : user(user), callback(callback) {}

    [[nodiscard]] bool IsAnswered() const { return isAnswered; }

    /// The first answer counts. What the callback throws is kept: Qt's loop, in which the dialog
    /// runs, lets nothing through.
    void Answer(moxcore::utility::Guid const& folderID, UTF16String const& path) {
        if (std::exchange(isAnswered, true)) return;
        try {
            if (auto const function = std::exchange(callback, nullptr)) function(folderID, path);
        } catch (...) {
            thrown = std::current_exception();
        }
    }

    void RethrowWhatTheCallbackThrew() const {
        if (thrown) std::rethrow_exception(thrown);
    }

    std::shared_ptr<QuilloUser> const user;
    /// The section shown for it. Held weakly: its view keeps the view model, which keeps this.
    moxcore::utility::RefCountedWeakPtr<PopupSectionView> section;

private:
    SelectLocationCallback callback;  // until it was called
    bool isAnswered = false;
    std::exception_ptr thrown;  // by the callback
};

class SelectLocationManagerImpl : public moxcore::utility::RefCountedObjectWithWeakPtr {
public:
    /// Shows the dialog for `request` and returns when it has closed.
    void Show(std::shared_ptr<Request> const& request) {
        auto const viewID = viewModel->GetCurrentViewID();
        requests.push_back(request);
        std::exception_ptr failure;
        try {
            ShowPicker(request);
        } catch (...) {
            failure = std::current_exception();
        }
        // The section may stand in a dialog that goes on to be shown for another call.
        if (auto const section = request->section.Lock())
            if (auto* const column =
                    dynamic_cast<moxui::ui::UI_Container*>(section->UI_GetParentNode().get()))
                column->ChildRequestRemove(section);
        requests.pop_back();
        if (!requests.empty()) GoBackTo(requests.back(), viewID);
        if (failure) std::rethrow_exception(failure);
    }

private:
    void ShowPicker(std::shared_ptr<Request> const& request) {
        Serve(request);

        boost::intrusive_ptr<view::LocationPickerView> const picker(
            new view::LocationPickerView(viewModel));
        auto const section = dialogManager->InsertPopupSection(0, picker);
        request->section = moxcore::utility::RefCountedWeakPtr(section.get());
        dialogManager->MaximizePopupSection(section);
        dialogManager->SetButtons(picker, view::LocationPickerView::kCancelButtonID,
                                  view::LocationPickerView::kCommitButtonID);
        dialogManager->ShowWindow();
        // Its window went without a button's being pressed, with the host's for instance.
        if (!request->IsAnswered()) picker->Cancel();
    }

    void Serve(std::shared_ptr<Request> const& request) {
        // A callback that asks again does so when its own picker has ended, and with it the
        // messages.
        viewModel->EnableCurrentViewIDMessages(true);
        viewModel->SelectLocationAPI(
            request->user, [request](moxcore::utility::Guid const& folderID,
                                     UTF16String const& path) { request->Answer(folderID, path); });
    }

    /// This call was made while the dialog was shown for `request`, at the step `viewID`.
    void GoBackTo(std::shared_ptr<Request> const& request, ShareForReviewViewID viewID) {
        Serve(request);
        // The picker has seen another step meanwhile, and must see its own again.
        viewModel->SetInitialCurrentViewID(ShareForReviewViewID::None);
        viewModel->SetCurrentViewID(viewID);
        dialogManager->MaximizePopupSection(request->section.Lock());
    }

    std::shared_ptr<ShareForReviewViewModel> const viewModel =
        std::make_shared<ShareForReviewViewModel>();
    std::shared_ptr<PopupManager> const dialogManager = view::CreateDialogManager();
    std::vector<std::shared_ptr<Request>> requests;  // the calls under way
};

}  // namespace

void ShowSelectLocationDialogCentered(std::shared_ptr<QuilloUser> const& user,
                                      SelectLocationCallback const& callback) {
    // Holds the manager while a dialog is shown.
    static boost::intrusive_ptr<SelectLocationManagerImpl> slot;
    if (!slot) slot = new SelectLocationManagerImpl;
    auto const manager = slot;
    auto const request = std::make_shared<Request>(user, callback);
    {
        struct Emptying {
            ~Emptying() { slot.reset(); }
        } const emptying;
        manager->Show(request);
    }
    request->RethrowWhatTheCallbackThrew();
}

void ShowSelectLocationDialogCentered(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user,
    SelectLocationCallback const& callback) {
    ShowSelectLocationDialogCentered(model::GetUserFromClient(user), callback);
}

}  // namespace quillomoxui::sharedui
