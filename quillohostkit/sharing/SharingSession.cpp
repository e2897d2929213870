// The library's connection to its service, and the user's session.

#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quilloauth/AuthManager.h"
#include "quillohostkit/process/OnMainThread.h"
#include "quillohostkit/session/ExplainFailure.h"
#include "quillohostkit/session/TellWaits.h"
#include "quillohostkit/sharing/ServiceSetup.h"
#include "quillohostkit/sharing/Sharing.h"
#include "quillomoxui/model/QuilloUser.h"

namespace quillohostkit {

using moxcore::config::Text;
using quillomoxui::ShareForReviewViewID;

bool Sharing::Connect() {
    if (viewModel) return true;
    if (!ConnectService()) return false;
    viewModel = std::make_shared<quillomoxui::ShareForReviewViewModel>();
    ConnectLibrary();
    return true;
}

void Sharing::ConnectLibrary() {
    ConnectStore(
        *viewModel,
        [this]() -> std::shared_ptr<SharedAsset const> {
            return active ? active->shared : nullptr;
        },
        [tell = token.Guard([this](auto const& thrown) { TellException(thrown); })](
            auto const& thrown) {
            moxcore::threads::AsyncCallFromMainThread([=] { tell(thrown); }, 0);
        });
    viewModel->SetAssetProcessingMethod([](auto const&...) {});  // ExportWanted asks for it
    viewModel->ObserveShares(token.WeakTo<quillomoxui::ShareEvents>(*this));
    bindings.push_back(viewModel->CurrentViewIDNotifyingPropertyHost::BindValueChanged(
        [this, wasOpen = false](auto view) mutable {
            bool const isOpen = view != ShareForReviewViewID::None;
            if (isOpen) isOpening = false;
            // It may have been opened again before this was delivered.
            if (std::exchange(wasOpen, isOpen) && !isOpen && !isOpening && !IsSharing())
                LeaveShare();
        }));
    bindings.push_back(viewModel->UserNotifyingPropertyHost::BindValueChanged(
        [this](auto const& user) { OnUserChanged(*user); }));
    bindings.push_back(viewModel->SignInProgressNotifyingPropertyHost::BindValueChanged(
        [this](auto const& signIn) { OnSignInChanged(signIn); }));
    for (auto const& binding : TellWaits(*viewModel, [this](auto const& line) { Tell(line); }))
        bindings.push_back(binding);
}

void Sharing::Resume() {
    try {
        if (isResuming || !Connect()) return;
    } catch (...) {
        return;  // reported when the user shares
    }
    auto const isLate = [this] {
        return !viewModel->GetUser()->GetID().IsNull() || viewModel->GetIsLoggedIn() ||
               viewModel->GetSignInProgress().IsUnderWay();
    };
    if (isLate()) return;
    isResuming = true;
    OnMainThread(quilloauth::jwt::GetAccessToken(), token, [this, isLate](auto const& kept) {
        if (kept.GetException() || isLate())
            isResuming = false;
        else
            viewModel->Login();  // with the token that there is
    });
}

void Sharing::SignIn() {
    if (!IsReady()) return;
    isResuming = false;  // the user has asked for it, so its failure is shown
    viewModel->Login();
}

void Sharing::SignOut() {
    if (viewModel) viewModel->Logout();
}

void Sharing::OnUserChanged(quillomoxui::QuilloUser const& user) {
    bool const isSignedIn = !user.GetID().IsNull();
    userName = isSignedIn ? NameOf(user) : "";
    if (isSignedIn && !std::exchange(isResuming, false))
        Tell(Text("$$$/Vistrel/quillohostkit/SignIn/Done=Signed in as {user}.",
                  {{"user", userName}}));
    Changed();
}

void Sharing::OnSignInChanged(quilloauth::SignInProgress const& signIn) {
    bool const wasSigningIn = std::exchange(isSigningIn, signIn.IsUnderWay());
    if (!wasSigningIn || signIn.IsUnderWay()) return;
    if (signIn.stage != quilloauth::SignInStage::None) {
        isResuming = false;
        return;
    }
    // The message of a cancelled sign-in holds no longer.
    if (viewModel->GetUser()->GetID().IsNull() && !viewModel->GetIsLoggedIn()) Tell("");
}

void Sharing::OnFailure(quillocommon::Failure const& failure) {
    using quillocommon::Step;
    bool const isSignIn = failure.step == Step::SignIn || failure.step == Step::ReadUser;
    // Nobody has asked for it: the popup offers to sign in.
    if (isSignIn && std::exchange(isResuming, false)) return;
    Tell(ExplainFailure(failure));
}

}  // namespace quillohostkit
