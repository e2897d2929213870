#include "quillohostkit/sharing/Sharing.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <algorithm>
#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/HostWidget.h"
#include "quillohostkit/media/MovieExport.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/OnMainThread.h"
#include "quillohostkit/sharing/AssetTitle.h"
#include "quillohostkit/sharing/HostStrings.h"
#include "quillohostkit/sharing/PaletteTheme.h"
#include "quillohostkit/sharing/ServiceSetup.h"
#include "quillohostkit/state/KeyLocks.h"
#include "quillohostkit/widgets/AssetIcon.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {

using moxcore::config::Text;
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
                                       Text("$$$/Vistrel/quillohostkit/Share/Waiting=Waiting for "
                                            "another program that shares this asset or name."));
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
                Text("$$$/Vistrel/quillohostkit/Service/NotSet=There is no review service: its "
                     "address is not set (QUILLO_SERVICE_URL, or the application's settings)."));
            return false;
        }
        OpenFiles();
        return true;
    } catch (...) {
        TellException(std::current_exception());
        return false;
    }
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
            Tell(Text("$$$/Vistrel/quillohostkit/Share/Nothing=There is nothing to share."));
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

bool Sharing::CanCancel() const {
    return phase == Phase::Linking || phase == Phase::Exporting || phase == Phase::Uploading;
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
                  .canCancel = CanCancel(),
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
    if (CanCancel()) viewModel->CancelShare();  // which ends the export as well
}

/// A client may remove itself or another one meanwhile.
void Sharing::ForEachClient(std::function<void(SharingClient&)> const& call) {
    auto const snapshot = clients;
    for (auto* const client : snapshot)
        if (std::find(clients.begin(), clients.end(), client) != clients.end()) call(*client);
}

void Sharing::Changed() {
    ForEachClient([](SharingClient& client) { client.OnChanged(); });
}

void Sharing::SetPhase(Phase newPhase) {
    phase = newPhase;
    Changed();
}

void Sharing::Tell(std::string const& line) {
    if (clients.empty() && !line.empty()) qCWarning(logCategory, "%s", line.c_str());
    ForEachClient([&](SharingClient& client) { client.OnMessage(line); });
}

void Sharing::TellException(std::exception_ptr const& thrown) {
    Tell(moxcore::config::ExtractMessageFromException(thrown));
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
