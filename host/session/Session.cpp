#include "host/session/Session.h"

#include <algorithm>

#include "host/state/HostFiles.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/debug/DebugDatabase.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/Browser.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/session/ExplainFailure.h"
#include "quillohostkit/session/TellWaits.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

using quillocommon::Step;
using quillohostkit::FailureKind;

/// Whether the service has ended the kept session.
bool IsSessionOver(quillocommon::Failure const& failure) {
    return failure.result == quilloauth::jwt::kSessionOver || failure.httpStatus == 401;
}

FailureKind KindOf(Step step) {
    switch (step) {
        case Step::SignIn:
        case Step::ReadUser:
            return FailureKind::SignIn;
        case Step::ReadLocations:
            return FailureKind::Location;
        case Step::Upload:
            return FailureKind::Upload;
        case Step::CreateReviewLink:
        case Step::AddToReviewLink:
            return FailureKind::Link;
        case Step::EncryptRequests:
        case Step::ListLocations:
        case Step::KeepSignIn:
        case Step::HandleEvent:
            break;
    }
    return FailureKind::Other;
}

}  // namespace

Session::Session(Options const& options, MainLoop& loop, ProgressDisplay& display)
    : loop(loop),
      display(display),
      locks(OwnHostFile("locks")),
      inbox([this](auto const& failure) { OnFailure(failure); }),
      service(options, locks,
              {.onWait =
                   [&display] {
                       display.Tell(
                           Text("$$$/Vistrel/quillo-host/Session/Waiting=Waiting for another "
                                "quillo-host that uses the same state."));
                   },
               .onGone = [&loop](auto const& gone) { loop.Fail(gone); }}) {
    if (options.browser)
        quilloauth::SetBrowserOpener(
            [program = *options.browser](auto const& url, auto const& onFailure) {
                quilloauth::OpenWithProgram(program, url, onFailure);
            });
    loop.Await(service.Ready());
    quillomoxui::InitQuilloCppSdk(moxcore::string::AsciiToUTF16("quillo-host"),
                                  moxcore::string::AsciiToUTF16("http://127.0.0.1/signed-in"));
    moxcore::debug::DebugDatabase::Instance().SetEntry("QuilloNative.UseQuilloCppSdk",
                                                       options.backend == Backend::Sdk);
    viewModel = std::make_shared<quillomoxui::ShareForReviewViewModel>();
    waits =
        quillohostkit::TellWaits(*viewModel, [&display](auto const& line) { display.Tell(line); });
}

Session::~Session() {
    quilloauth::SetBrowserOpener({});
}

std::shared_ptr<quillomoxui::QuilloUser> Session::SignIn() {
    auto const binding = viewModel->UserNotifyingPropertyHost::BindValueChanged([](auto const&) {});
    viewModel->StartShareForReviewPopup();
    auto const isSignedIn = [this] { return !viewModel->GetUser()->GetID().IsNull(); };
    viewModel->Login();
    loop.WaitUntil([&] { return isSignedIn() || FindFailure(kSignInSteps); });
    if (!isSignedIn() && IsSessionOver(*FindFailure(kSignInSteps))) {
        failures.clear();
        // It is forgotten now. A sign-in that finds out goes on as if there had been none; one
        // that had ended by then has to be made again. The client library does so by itself.
        if (viewModel->GetIsLoggedIn()) viewModel->Login();
    }
    WaitUntil(kSignInSteps, isSignedIn);
    return viewModel->GetUser();
}

void Session::SignOut() {
    viewModel->Logout();
    // Failures may still be queued for this thread.
    auto const isPast = std::make_shared<bool>(false);
    moxcore::threads::AsyncCallFromMainThread([isPast] { *isPast = true; }, 0);
    loop.WaitUntil([isPast] { return *isPast; });
    ThrowIfFailed({Step::SignIn});
}

void Session::OnFailure(quillocommon::Failure const& failure) {
    if (quillocommon::IsWarning(failure.step))
        return display.Tell(quillohostkit::ExplainFailure(failure));
    failures.push_back(failure);
}

void Session::WaitUntil(std::initializer_list<Step> steps, std::function<bool()> const& done) {
    loop.WaitUntil([&] { return done() || FindFailure(steps); });
    if (!done()) ThrowIfFailed(steps);
}

void Session::ThrowIfFailed(std::initializer_list<Step> steps) const {
    if (auto const* failure = FindFailure(steps)) Throw(*failure);
}

quillocommon::Failure const* Session::FindFailure(std::initializer_list<Step> steps) const {
    auto const found = std::find_if(failures.begin(), failures.end(), [&](auto const& failure) {
        return std::find(steps.begin(), steps.end(), failure.step) != steps.end();
    });
    return found == failures.end() ? nullptr : &*found;
}

void Session::Throw(quillocommon::Failure const& failure) const {
    throw quillohostkit::Failure(KindOf(failure.step), quillohostkit::ExplainFailure(failure));
}

}  // namespace quillohost
