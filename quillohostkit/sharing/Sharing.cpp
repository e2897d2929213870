#include "quillohostkit/sharing/Sharing.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <algorithm>
#include <utility>

#include "moxcore/string/Conversions.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/MainThread.h"
#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/HostWidget.h"
#include "quilloauth/AuthManager.h"
#include "quillohostkit/media/MovieExport.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/OnMainThread.h"
#include "quillohostkit/session/ExplainFailure.h"
#include "quillohostkit/session/TellWaits.h"
#include "quillohostkit/sharing/AssetTitle.h"
#include "quillohostkit/sharing/HostStrings.h"
#include "quillohostkit/sharing/PaletteTheme.h"
#include "quillohostkit/sharing/ServiceSetup.h"
#include "quillohostkit/state/KeyLocks.h"
#include "quillohostkit/widgets/AssetIcon.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {
namespace {

namespace fs = std::filesystem;
namespace assetdata = quillomoxui::assetdata;
using quillomoxui::EncodingStatus;
using quillomoxui::ShareForReviewViewID;

Q_LOGGING_CATEGORY(logCategory, "quillohostkit")

constexpr std::chrono::seconds kPatienceWithExporters{5};

std::shared_ptr<Sharing>& TheSharing() {
    static moxcore::utility::NoDestructor<std::shared_ptr<Sharing>> sharing;
    return *sharing;
}

}  // namespace

std::shared_ptr<Sharing> Sharing::Get() {
    auto& sharing = TheSharing();
    if (!sharing && QCoreApplication::instance()) {
        sharing = std::make_shared<Sharing>();
        // Before the application's end, which destroys what widgets need.
        qAddPostRoutine(&Sharing::End);
    }
    return sharing;
}

void Sharing::End() {
    TheSharing().reset();
}

std::shared_ptr<Sharing> Sharing::Existing() {
    return TheSharing();
}

Sharing::Sharing()
    : failures([this](auto const& failure) { OnFailure(failure); }),
      quitConnection(QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                                      [this] { Stop(); })) {
    moxui::backend::RunMainThreadQueueInQt();
}

Sharing::~Sharing() {
    QObject::disconnect(quitConnection);
    Stop();
    if (popup) popup->DestructWindow();
}

void Sharing::Add(SharingClient& client) {
    clients.push_back(&client);
    // The host's start comes first.
    if (!viewModel)
        QMetaObject::invokeMethod(QCoreApplication::instance(), token.Guard([this] { Resume(); }),
                                  Qt::QueuedConnection);
}

void Sharing::Remove(SharingClient& client) {
    std::erase(clients, &client);
    if (!active || active->client != &client) return;
    active->client = nullptr;
    isOpening = false;
    if (viewModel) viewModel->SetCurrentViewID(ShareForReviewViewID::None);
    if (!IsSharing()) LeaveShare();
}

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

void Sharing::OpenFiles() {
    if (files) return;
    KeyLocks const locks(OwnDataFile("locks"));
    auto const store = std::make_shared<AssetStore>(OwnDataFile("assets.sqlite"), ServiceName());
    auto const tell = [this](auto const& line) { Tell(line); };
    files.reset(new Files{
        store, Destinations(store, viewModel, tell),
        ShareLocks(locks, {.onWait =
                               [tell] {
                                   tell(
                                       "Waiting for another program that shares this asset or "
                                       "name.");
                               },
                           .onFailure = [this](auto const& thrown) { TellException(thrown); }})});
}

void Sharing::MakePopup() {
    if (popup) return;
    popup = quillomoxui::CreatePopupManager();
    screens = quillomoxui::CreateShareForReviewScreenManager(viewModel, popup);
}

/// Whether something can be shared; if not, the clients get the reason.
bool Sharing::IsReady() {
    try {
        if (!Connect()) {
            Tell(
                "There is no review service: its address is not set (QUILLO_SERVICE_URL, or the "
                "application's settings).");
            return false;
        }
        OpenFiles();
        return true;
    } catch (...) {
        TellException(std::current_exception());
        return false;
    }
}

void Sharing::Resume() {
    try {
        if (isResuming || !Connect()) return;
    } catch (...) {
        return;  // reported when the user shares
    }
    if (!viewModel->GetUser()->GetID().IsNull()) return;
    isResuming = true;
    OnMainThread(quilloauth::jwt::GetAccessToken(), token, [this](auto const& kept) {
        bool const isLate =
            viewModel->GetSignInProgress().IsUnderWay() || viewModel->GetIsLoggedIn();
        if (kept.GetException() || isLate)
            isResuming = false;
        else
            viewModel->Login();  // with the token that there is
    });
}

void Sharing::Open(SharingClient& client) {
    if (!IsReady()) return;
    if (!IsSharing() && !Take(client)) return;
    ShowPopup(client);
}

void Sharing::HangPopupFrom(SharingClient& client) {
    FollowPalette(client.GetAnchor().palette());
    MakePopup();
    anchor = moxui::backend::WrapWidget(&client.GetAnchor());
    popup->SetParent(anchor);
}

void Sharing::ShowPopup(SharingClient& client) {
    HangPopupFrom(client);
    isOpening = true;
    WithLocks([this] { viewModel->StartShareForReviewPopup(); });
}

void Sharing::ShowDebugView() {
    if (clients.empty() || !IsReady()) return;
    HangPopupFrom(*clients.front());
    viewModel->EnableCurrentViewIDMessages(true);
    viewModel->SetCurrentViewID(ShareForReviewViewID::DebugView);
}

void Sharing::ShareAgain(SharingClient& client) {
    if (!IsReady()) return;
    if (!IsSharing()) {
        if (!Take(client)) return;
        Reset();
    }
    ShowPopup(client);
}

void Sharing::Refresh(SharingClient& client) {
    if (IsPopupOpen() && active && active->client == &client && !IsSharing()) Open(client);
    Changed();
}

/// Nothing is being shared: the popup is the client's. False, with the reason to the client, when
/// it has nothing to share.
bool Sharing::Take(SharingClient& client) {
    Asset asset;
    try {
        asset = client.GetAsset();
        if (asset.path.isEmpty()) {
            Tell("There is nothing to share.");
            return false;
        }
        bool const isSame =
            active && active->client == &client && active->asset.path == asset.path &&
            active->asset.title == asset.title && active->hostStrings == client.GetStrings();
        if (isSame)
            UpdateActive(asset);
        else
            Activate(client, asset);
        return true;
    } catch (...) {
        TellException(std::current_exception());
        return false;
    }
}

void Sharing::Activate(SharingClient& client, Asset const& asset) {
    files->shareLocks.Release();
    auto const id = files->store->AssetOf(fs::path(QFile::encodeName(asset.path).toStdString()));
    auto const host = client.GetStrings();
    std::shared_ptr<StringStore> strings = files->store;
    if (host) {
        auto const hostStrings = std::make_shared<HostStrings>(
            host, asset, ServiceName(),
            token.Guard([this](auto const& thrown) { TellException(thrown); }));
        hostStrings->Load();
        strings = hostStrings;
    }
    auto const name = TitleOf(asset).toStdString();
    active = std::make_shared<Active>(Active{&client,
                                             asset,
                                             client.GetExporter(),
                                             host,
                                             std::make_shared<SharedAsset>(strings, id, name),
                                             {}});
    viewModel->SetActiveAssetName(moxcore::string::UTF8to16(name));
    viewModel->SetAssetTypeIcon(AssetIcon(asset.kind));
    Reset();
    files->destinations.Restore(active->shared);
    Changed();
}

/// The same asset once more, perhaps after a change.
void Sharing::UpdateActive(Asset const& asset) {
    active->asset = asset;
    active->exporter = active->client->GetExporter();
    viewModel->SetAssetTypeIcon(AssetIcon(asset.kind));
    bool const isShared = viewModel->GetEncodingStatus().status == EncodingStatus::UploadComplete;
    if (isShared && RevisionOf(asset) != active->sharedRevision) Reset();
}

/// Nothing has been shared yet, as far as the popup is concerned.
void Sharing::Reset() {
    viewModel->SetEncodingStatus({EncodingStatus::None});
    viewModel->SetEncodingProgress(0);
    viewModel->SetReviewLinkURL({});
    Changed();
}

bool Sharing::IsPopupOpen() const {
    return viewModel && viewModel->GetCurrentViewID() != ShareForReviewViewID::None;
}

bool Sharing::IsSharing() const {
    return phase != Phase::Idle || (viewModel && viewModel->IsShareUnderWay());
}

void Sharing::WithLocks(std::function<void()> const& then) {
    files->shareLocks.Take(active->shared->LockKeys(viewModel->GetOutputFileName()), then);
}

Sharing::Status Sharing::GetStatus(SharingClient const& client) const {
    Status status{.userName = userName,
                  .phase = phase,
                  .title = title,
                  .progress = progress,
                  .link = {},
                  .version = 0,
                  .canCancel = phase == Phase::Linking || phase == Phase::Exporting ||
                               phase == Phase::Uploading,
                  .canShareAgain = false};
    if (!active || active->client != &client) return status;
    if (!active->shared->Stored(assetdata::kUploadedAssetGuid).empty()) {
        status.link = active->shared->Stored(assetdata::kReviewLinkURL);
        status.version = active->shared->Version();
    }
    status.canShareAgain = phase == Phase::Idle &&
                           viewModel->GetEncodingStatus().status == EncodingStatus::UploadComplete;
    return status;
}

std::optional<ChosenLocation> Sharing::DefaultDestination() {
    if (!Connect()) return std::nullopt;
    OpenFiles();
    return files->store->ReadDefaultDestination();
}

void Sharing::SetDefaultDestination(std::optional<ChosenLocation> const& location) {
    if (!Connect()) return;
    OpenFiles();
    if (location)
        files->store->WriteDefaultDestination(*location);
    else
        files->store->ForgetDefaultDestination();
    if (!IsSharing()) files->destinations.OnDefaultChanged();
}

void Sharing::Cancel() {
    if (phase != Phase::Linking && phase != Phase::Exporting && phase != Phase::Uploading) return;
    run.reset();
    viewModel->CancelShare();
}

void Sharing::SignIn() {
    if (IsReady()) viewModel->Login();
}

void Sharing::SignOut() {
    if (viewModel) viewModel->Logout();
}

void Sharing::OnUserChanged(quillomoxui::QuilloUser const& user) {
    bool const isSignedIn = !user.GetID().IsNull();
    userName = isSignedIn ? NameOf(user) : "";
    if (isSignedIn && !std::exchange(isResuming, false)) Tell("Signed in as " + userName + ".");
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

void Sharing::Changed() {
    auto const told = clients;
    for (auto* const client : told)
        if (std::find(clients.begin(), clients.end(), client) != clients.end()) client->OnChanged();
}

void Sharing::SetPhase(Phase newPhase) {
    phase = newPhase;
    Changed();
}

void Sharing::Tell(std::string const& line) {
    if (clients.empty() && !line.empty()) qCWarning(logCategory, "%s", line.c_str());
    auto const told = clients;
    for (auto* const client : told)
        if (std::find(clients.begin(), clients.end(), client) != clients.end())
            client->OnMessage(line);
}

std::string Sharing::MessageOf(std::exception_ptr const& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (std::exception const& exception) {
        return exception.what();
    } catch (...) {
        return "The host has failed for an unknown reason.";
    }
}

void Sharing::TellException(std::exception_ptr const& thrown) {
    Tell(MessageOf(thrown));
}

/// The share has ended, and nobody looks at it.
void Sharing::LeaveShare() {
    if (files) files->shareLocks.Release();
    if (active && !active->client) active.reset();
}

/// The application ends.
void Sharing::Stop() {
    bool const isExporting = run != nullptr;
    if (phase == Phase::Uploading || phase == Phase::Finishing)
        qCWarning(
            logCategory, "%s",
            ("The share of \"" + title + "\" was stopped." + WhereItIsKept(exported)).c_str());
    run.reset();
    if (isExporting && !ExportRun::AwaitExporters(kPatienceWithExporters))
        qCWarning(logCategory, "The exporter of \"%s\" goes on although it was cancelled.",
                  title.c_str());
    if (viewModel) viewModel->SetCurrentViewID(ShareForReviewViewID::None);
    phase = Phase::Idle;
    // What the library has stored reaches the host's own strings.
    moxcore::threads::MainThread::RunPending();
}

}  // namespace quillohostkit
