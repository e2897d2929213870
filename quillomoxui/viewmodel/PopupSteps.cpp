// The actions of the popup and the location picker: the first view, signing in and out, choosing a
// location.

#include <optional>
#include <utility>

#include "moxcore/debug/DebugDatabase.h"
#include "moxcore/string/Conversions.h"
#include "quilloauth/AuthManager.h"
#include "quillomoxui/model/Backends.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui {

using moxcore::string::AsciiToUTF16;
using moxcore::string::StdToUTF16String;

namespace {

/// Views that a developer can have the popup open on, in the order in which the switches are tried.
constexpr std::pair<char const*, ShareForReviewViewID> kDebugViews[] = {
    {"UnifiedHeader.ShowQuilloNativeShareButtonDebugView", ShareForReviewViewID::DebugView},
    {"UnifiedHeader.ShowQuilloNativeShareButtonCopyLinkView",
     ShareForReviewViewID::CopyLinkSection},
    {"UnifiedHeader.ShowQuilloNativeShareButtonEncodingProgressView",
     ShareForReviewViewID::EncodingProgress},
};

bool IsSwitchedOn(char const* key) {
    return moxcore::debug::DebugDatabase::Instance().GetEntryAs<bool>(key, false);
}

}  // namespace

void ShareForReviewViewModel::StartShareForReviewPopup() {
    EnableCurrentViewIDMessages(true);
    for (auto const& [key, view] : kDebugViews)
        if (IsSwitchedOn(key)) return SetCurrentViewID(view);

    if (GetUser()->GetID().IsNull()) return SetCurrentViewID(ShareForReviewViewID::SigninPrompt);
    switch (GetEncodingStatus().status) {
        case EncodingStatus::Queued:
            return SetCurrentViewID(ShareForReviewViewID::WaitingInQueue);
        case EncodingStatus::Encoding:
            return SetCurrentViewID(ShareForReviewViewID::EncodingProgress);
        case EncodingStatus::Uploading:
            return SetCurrentViewID(ShareForReviewViewID::UploadInProgress);
        case EncodingStatus::UploadComplete:
            return SetCurrentViewID(ShareForReviewViewID::CopyLinkSection);
        default:
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
    }
}

void ShareForReviewViewModel::Login() {
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const signIn = BeginSignIn();
    auto const onProgress = [weak](quilloauth::SignInProgress const& progress) {
        if (auto const self = weak.lock()) self->SetSignInProgress(progress);
    };
    auto const takeUser = [weak, signIn](std::shared_ptr<QuilloUser> const& user,
                                         std::optional<ShareForReviewViewID> view = std::nullopt) {
        if (auto const self = weak.lock()) self->TakeUser(user, signIn, view);
    };
    auto const& backend = model::ChosenBackend();
    if (!backend.HasSignInStep()) {
        backend.SignIn(nullptr, onProgress);
        return backend.GetCurrentUser(
            [takeUser](auto const& user) { takeUser(user, ShareForReviewViewID::ReviewInQuillo); });
    }
    auto const onLoggedIn = [weak, signIn, takeUser, &backend](bool loggedIn) {
        auto const self = weak.lock();
        if (!self || !loggedIn || !self->TakeSignedIn(signIn)) return;
        backend.GetCurrentUser([takeUser](auto const& user) { takeUser(user); });
    };
    backend.SignIn(onLoggedIn, onProgress);
}

void ShareForReviewViewModel::CancelLogin() {
    // The sign-in under way may be another view model's.
    if (GetSignInProgress().IsUnderWay()) model::ChosenBackend().CancelSignIn();
}

void ShareForReviewViewModel::ReopenLoginPage() {
    if (GetSignInProgress().stage == quilloauth::SignInStage::InBrowser)
        quilloauth::jwt::ReopenBrowser();
}

void ShareForReviewViewModel::Logout() {
    static_cast<void>(BeginSignIn());  // what is under way is late from here on
    model::ChosenBackend().SignOut();
    SetIsLoggedIn(false);
    SetUser(std::make_shared<QuilloUser>());
}

void ShareForReviewViewModel::SelectLocationAPI(std::shared_ptr<QuilloUser> const& user,
                                                SelectLocationCallback const& callback) {
    SetUser(user);
    {
        SelectLocationCallback replaced = callback;  // what it held dies after the lock
        std::lock_guard lock(mutex);
        fields.selectLocationCallback.swap(replaced);
        fields.locationPickerMode = LocationPickerMode::API;
    }
    SetInitialCurrentViewID(ShareForReviewViewID::SelectProject);
}

void ShareForReviewViewModel::LocationPickerSelectionCommitted() {
    auto const now = CopyFields();
    auto const user = GetUser();
    auto const selection = user->GetSelection();
    switch (now.locationPickerMode) {
        case LocationPickerMode::Share:
            if (selection) {
                Guid first;
                Guid second;
                now.getAssetIDsMethod(first, second);
                now.setAssetDataMethod(first, second, AsciiToUTF16(assetdata::kUploadFolderGuid),
                                       StdToUTF16String(selection->GetID().AsStdString()));
            }
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
        case LocationPickerMode::API:
            SetCurrentViewID(ShareForReviewViewID::None);
            if (!now.selectLocationCallback) return;
            return selection
                       ? now.selectLocationCallback(selection->GetID(), user->GetSelectionPath())
                       : now.selectLocationCallback({}, {});
    }
}

void ShareForReviewViewModel::LocationPickerCancelled() {
    auto const now = CopyFields();
    switch (now.locationPickerMode) {
        case LocationPickerMode::Share:
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
        case LocationPickerMode::API:
            SetCurrentViewID(ShareForReviewViewID::None);
            if (now.selectLocationCallback) now.selectLocationCallback({}, {});
            return;
    }
}

}  // namespace quillomoxui
