#include "host/Session.h"

#include <algorithm>
#include <utility>

#include "host/Failure.h"
#include "moxcore/debug/DebugDatabase.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quilloauth/AuthManager.h"
#include "quillocommon/ServiceAddress.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

namespace quillohost {
namespace {

using moxcore::string::AsciiToUTF16;
using moxcore::string::UTF16to8;
using quillocommon::Step;
using quillomoxui::FetchChildrenState;
using quillomoxui::QuilloNode;

constexpr std::initializer_list<Step> kSignInSteps{Step::SignIn, Step::ReadUser};

/// Whether the service has refused the user's session rather than not answered.
bool IsRefusal(quillocommon::Failure const& failure) {
    return failure.httpStatus == 400 || failure.httpStatus == 401;
}

/// How often the children of a node are asked for.
constexpr int kAttempts = 8;

ExitCode ExitCodeOf(Step step) {
    switch (step) {
        case Step::SignIn:
        case Step::ReadUser:
            return ExitCode::SignIn;
        case Step::ReadLocations:
            return ExitCode::Location;
        case Step::Upload:
            return ExitCode::Upload;
        case Step::CreateReviewLink:
        case Step::AddToReviewLink:
            return ExitCode::Link;
    }
    return ExitCode::Other;
}

}  // namespace

std::filesystem::path HostDataFile(std::string const& name) {
    using namespace moxcore::filesupport;
    return std::filesystem::path(UTF16to8(commondirs::UserDataDir().FullPath())) / name;
}

Session::Session(Options const& options, MainLoop& loop, ProgressDisplay& display)
    : loop(loop),
      display(display),
      backend(options.backend),
      locks(HostDataFile("locks")),
      failures(std::make_shared<std::vector<quillocommon::Failure>>()) {
    subscription = quillocommon::ListenToFailures([failures = failures](auto const& failure) {
        moxcore::threads::AsyncCallFromMainThread(
            [failures, failure] { failures->push_back(failure); }, 0);
    });
    if (options.service)
        address = *options.service;
    else
        UseEmbeddedService(options);
    if (!quillocommon::SetServiceAddress(address))
        throw Failure(ExitCode::Usage, "--service \"" + address +
                                           "\" is no address of a service; write it like "
                                           "http://127.0.0.1:8080, without a path.");
    address = quillocommon::GetServiceAddress();
    quillomoxui::InitQuilloCppSdk(AsciiToUTF16("quillo-host"),
                                  AsciiToUTF16("http://127.0.0.1/signed-in"));
    moxcore::debug::DebugDatabase::Instance().SetEntry("QuilloNative.UseQuilloCppSdk",
                                                       backend == Backend::Sdk);
    viewModel = std::make_shared<quillomoxui::ShareForReviewViewModel>();
}

Session::~Session() {
    // A service of the host's own ends with the session, and must hear of a sign-out before that.
    if (embedded) quilloauth::jwt::AwaitSignOuts();
}

void Session::UseEmbeddedService(Options const& options) {
    serviceLock = loop.Await(locks.Take("service", [this] {
        display.Tell("Waiting for another quillo-host that uses the same state.");
    }));
    embeddedData = options.data ? *options.data / "service" : HostDataFile("service");
    embedded = std::make_unique<EmbeddedService>(embeddedData, [this](auto const& reason) {
        loop.Fail(std::make_exception_ptr(
            Failure(ExitCode::SignIn, "The host's own quillo-service has ended: " + reason)));
    });
    address = loop.Await(embedded->Address());
}

std::optional<std::filesystem::path> Session::EmbeddedData() const {
    if (!embedded) return std::nullopt;
    return embeddedData;
}

std::string Session::ServiceName() const {
    return embedded ? "embedded" : address;
}

std::shared_ptr<quillomoxui::QuilloUser> Session::SignIn() {
    auto const binding = viewModel->UserNotifyingPropertyHost::BindValueChanged([](auto const&) {});
    viewModel->StartShareForReviewPopup();
    auto const isSignedIn = [this] { return !viewModel->GetUser()->GetID().IsNull(); };
    viewModel->Login();
    loop.WaitUntil([&] { return isSignedIn() || FindFailure(kSignInSteps); });
    if (!isSignedIn() && IsRefusal(*FindFailure(kSignInSteps))) {
        // The session that was kept is over, and forgotten now: sign in as if there had been none.
        // The client library does so by itself.
        failures->clear();
        if (backend == Backend::Sdk) viewModel->Login();
    }
    WaitUntil(kSignInSteps, isSignedIn);
    return viewModel->GetUser();
}

void Session::SignOut() {
    viewModel->Logout();
    // What has failed is on its way to here.
    auto const told = std::make_shared<bool>(false);
    moxcore::threads::AsyncCallFromMainThread([told] { *told = true; }, 0);
    loop.WaitUntil([told] { return *told; });
    if (auto const* failure = FindFailure({Step::SignIn})) Throw(*failure);
}

void Session::StartFetching(std::shared_ptr<QuilloNode> const& node) {
    // Down to the projects the tree fetches itself, and a second fetch would replace the nodes that
    // the first one made.
    if (node->GetFetchChildrenState() == FetchChildrenState::NotFetched &&
        node->FindSelfOrAncestorOfType<quillomoxui::QuilloProject>())
        node->FetchChildren();
}

quillomoxui::NodeVector<QuilloNode> Session::ChildrenOf(std::shared_ptr<QuilloNode> const& node) {
    // A project comes with its only child and is never said to be fetched.
    if (std::dynamic_pointer_cast<quillomoxui::QuilloProject>(node)) return node->GetChildNodes();

    StartFetching(node);
    auto const binding =
        node->FetchChildrenStateNotifyingPropertyHost::BindValueChanged([](auto const&) {});
    auto const isFetched = [&node] {
        return node->GetFetchChildrenState() == FetchChildrenState::Fetched;
    };
    for (int attempt = 1;; ++attempt) {
        auto const failuresBefore = CountFailures(Step::ReadLocations);
        auto const anotherFailed = [&] {
            return CountFailures(Step::ReadLocations) != failuresBefore;
        };
        WaitUntil(kSignInSteps, [&] { return isFetched() || anotherFailed(); });
        if (isFetched()) return node->GetChildNodes();
        // Nobody tells whose list it was that failed: another's does not matter here, and this one
        // is asked for again, as the library does not do that.
        if (attempt == kAttempts) Throw(failures->back());
        node->FetchChildren();
    }
}

void Session::WaitUntil(std::initializer_list<Step> steps, std::function<bool()> const& done) {
    loop.WaitUntil([&] { return done() || FindFailure(steps); });
    if (!done()) Throw(*FindFailure(steps));
}

quillocommon::Failure const* Session::FindFailure(std::initializer_list<Step> steps) const {
    auto const found = std::find_if(failures->begin(), failures->end(), [&](auto const& failure) {
        return std::find(steps.begin(), steps.end(), failure.step) != steps.end();
    });
    return found == failures->end() ? nullptr : &*found;
}

std::size_t Session::CountFailures(Step step) const {
    return static_cast<std::size_t>(
        std::count_if(failures->begin(), failures->end(),
                      [step](auto const& failure) { return failure.step == step; }));
}

void Session::Throw(quillocommon::Failure const& failure) const {
    auto const exitCode = ExitCodeOf(failure.step);
    std::string advice;
    if (exitCode == ExitCode::SignIn && failure.httpStatus == 0)
        advice = " The service is expected at " + address + "; is it running?";
    throw quillohost::Failure(exitCode, failure.message + advice);
}

}  // namespace quillohost
