#include "host/editor/Sharing.h"

#include <system_error>
#include <utility>

#include "host/state/HostFiles.h"
#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/OnMainThread.h"
#include "quillohostkit/session/FolderPath.h"
#include "quillohostkit/session/TellWaits.h"
#include "quillohostkit/state/AssetName.h"
#include "quillohostkit/widgets/AssetIcon.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohost::editor {
namespace {

namespace fs = std::filesystem;
using moxcore::string::UTF16String;
using moxcore::string::UTF16to8;
using moxcore::threads::AsyncCallFromMainThread;
using quillomoxui::EncodingStatus;
using quillomoxui::ShareFailure;
using quillomoxui::ShareFailureReason;
using quillomoxui::ShareForReviewViewID;
namespace assetdata = quillomoxui::assetdata;

/// Says what went wrong.
std::string MessageOf(std::exception_ptr const& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (std::exception const& exception) {
        return exception.what();
    }
}

fs::file_time_type TimeOf(fs::path const& file) {
    std::error_code error;  // gone meanwhile: the export will say so
    return fs::last_write_time(file, error);
}

}  // namespace

Sharing::Sharing(Options const& options, QWidget& anchorWidget, Hooks newHooks)
    : hooks(std::move(newHooks)),
      locks(OwnHostFile("locks")),
      failures([this](auto const& failure) { OnFailure(failure); }),
      service(options, locks,
              {.onWait =
                   [this] {
                       hooks.tell(
                           "Sharing has to wait for another quillo-host that uses the same state.");
                   },
               .onBrowser = [this] { hooks.tell(kSignInInBrowser); },
               .onGone = [this](auto const& gone) { hooks.tell(MessageOf(gone)); }}),
      store(std::make_shared<quillohostkit::AssetStore>(OwnHostFile("assets.sqlite"),
                                                        service.ServiceName())),
      viewModel(std::make_shared<quillomoxui::ShareForReviewViewModel>()),
      anchor(moxui::backend::WrapWidget(&anchorWidget)),
      popup(quillomoxui::CreatePopupManager()),
      screens(quillomoxui::CreateShareForReviewScreenManager(viewModel, popup)),
      destinations(store, viewModel, hooks.tell),
      shareLocks(locks,
                 {.onWait =
                      [this] {
                          hooks.tell(
                              "Waiting for another quillo-host that shares this movie or "
                              "name.");
                      },
                  .onFailure = [this](auto const& thrown) { hooks.tell(MessageOf(thrown)); }}) {
    popup->SetParent(anchor);
    ConnectLibrary();
    quillohostkit::OnMainThread(service.Ready(), token, [this](auto const& ready) {
        if (auto const thrown = ready.GetException()) return hooks.tell(MessageOf(thrown));
        isServiceReady = true;
        hooks.onChanged();
    });
}

Sharing::~Sharing() {
    popup->DestructWindow();
}

void Sharing::ConnectLibrary() {
    quillohostkit::ConnectStore(
        *viewModel, store,
        [this] { return active ? active->GetAsset() : quillohostkit::AssetStore::Asset{}; },
        [tell = token.Guard([this](auto const& thrown) { hooks.tell(MessageOf(thrown)); })](
            auto const& thrown) { AsyncCallFromMainThread([=] { tell(thrown); }, 0); });
    viewModel->SetAssetProcessingMethod([](auto const&...) {});  // ExportWanted asks for it
    viewModel->ObserveShares(token.WeakTo<quillomoxui::ShareEvents>(*this));
    bindings.push_back(viewModel->CurrentViewIDNotifyingPropertyHost::BindValueChanged(
        [this](auto view) { OnViewChanged(view); }));
    bindings.push_back(viewModel->UserNotifyingPropertyHost::BindValueChanged(
        [this](auto const& user) { OnUserChanged(*user); }));
    bindings.push_back(viewModel->SignInProgressNotifyingPropertyHost::BindValueChanged(
        [this](auto const& progress) { OnSignInChanged(progress); }));
    for (auto const& binding : quillohostkit::TellWaits(*viewModel, hooks.tell))
        bindings.push_back(binding);
}

void Sharing::SetMovie(quillohostkit::Movie const& movie) {
    open = std::make_shared<quillohostkit::SharedAsset>(
        store, movie, quillohostkit::DefaultAssetName(movie.file));
    if (!IsSharing()) {
        ActivateOpen();
        if (IsPopupOpen()) OpenPopup();
    }
    hooks.onChanged();
}

/// Nothing is being shared: the popup is the open movie's.
void Sharing::ActivateOpen() {
    shareLocks.Release();
    active = open;
    viewModel->SetActiveAssetName(moxcore::string::UTF8to16(active->GetName()));
    viewModel->SetAssetTypeIcon(quillohostkit::AssetIcon(active->GetMovie()));
    Reset();
    destinations.Restore(active);
}

/// Nothing has been shared yet, as far as the popup is concerned.
void Sharing::Reset() {
    viewModel->SetEncodingStatus({EncodingStatus::None});
    viewModel->SetEncodingProgress(0);
    viewModel->SetReviewLinkURL({});
}

/// Whether a share goes on, also one whose beginning or end has not been reported yet.
bool Sharing::IsSharing() const {
    return phase != Phase::Idle || viewModel->IsShareUnderWay();
}

bool Sharing::IsPopupOpen() const {
    return viewModel->GetCurrentViewID() != ShareForReviewViewID::None;
}

void Sharing::OpenPopup() {
    if (!IsReady()) return;
    // The file has changed since it was shared.
    if (CanShareAgain() && TimeOf(active->GetMovie().file) != sharedState) Reset();
    WithLocks([this] { viewModel->StartShareForReviewPopup(); });
}

std::optional<quillohostkit::ChosenLocation> Sharing::DefaultDestination() const {
    return store->ReadDefaultDestination();
}

void Sharing::SetDefaultDestination(std::optional<quillohostkit::ChosenLocation> const& location) {
    if (location)
        store->WriteDefaultDestination(*location);
    else
        store->ForgetDefaultDestination();
    if (!IsSharing()) destinations.OnDefaultChanged();
}

void Sharing::ShowDebugView() {
    viewModel->EnableCurrentViewIDMessages(true);
    viewModel->SetCurrentViewID(ShareForReviewViewID::DebugView);
}

bool Sharing::CanShareAgain() const {
    return phase == Phase::Idle && active && active == open &&
           viewModel->GetEncodingStatus().status == EncodingStatus::UploadComplete;
}

void Sharing::ShareAgain() {
    Reset();
    OpenPopup();
}

void Sharing::CancelExport() {
    if (phase != Phase::Exporting) return;
    probe.reset();
    exporter.reset();
    viewModel->CancelShare();
}

std::string Sharing::Epitaph() const {
    if (phase != Phase::Uploading && phase != Phase::Finishing) return "";
    return "The share of \"" + GetSharedName() + "\" was stopped." +
           quillohostkit::WhereItIsKept(exported);
}

void Sharing::WithLocks(std::function<void()> const& then) {
    shareLocks.Take(active->LockKeys(viewModel->GetOutputFileName()), then);
}

void Sharing::OnViewChanged(ShareForReviewViewID view) {
    if (view == ShareForReviewViewID::None && !IsSharing()) End();
}

void Sharing::OnUserChanged(quillomoxui::QuilloUser const& user) {
    if (user.GetID().IsNull()) return;
    hooks.tell("Signed in as " + quillohostkit::NameOf(user) + ".");
}

/// The message of a cancelled sign-in holds no longer.
void Sharing::OnSignInChanged(quilloauth::SignInProgress const& progress) {
    bool const wasSigningIn = std::exchange(isSigningIn, progress.IsUnderWay());
    bool const isOver = progress.stage == quilloauth::SignInStage::None;
    if (wasSigningIn && isOver && viewModel->GetUser()->GetID().IsNull()) hooks.tell("");
}

void Sharing::OnFailure(quillocommon::Failure const& failure) {
    if (quillocommon::IsWarning(failure.step)) return hooks.tell("Warning: " + failure.message);
    hooks.tell(service.Explain(failure));
}

void Sharing::ShareBegan(quillomoxui::ShareInfo const& began) {
    share = began;
    sharedName = UTF16to8(began.assetName);
    exported.clear();
    exportFailure.clear();
    destinations.Settle();
    SetPhase(Phase::Linking);
}

void Sharing::ExportWanted(quillomoxui::ShareInfo const& wanted, UTF16String const& outputFilePath,
                           UTF16String const& /*processingID*/) {
    WithLocks([this, id = wanted.shareID, output = UTF16to8(outputFilePath)] {
        if (id == share.shareID && phase == Phase::Linking) Export(output);
    });
}

void Sharing::Export(fs::path const& output) {
    SetPhase(Phase::Exporting);
    exported = output;
    sharedState = TimeOf(active->GetMovie().file);
    viewModel->SetEncodingStatus({EncodingStatus::Encoding});
    // Its file may be another one than when it was opened in the window.
    try {
        static_cast<void>(active->CheckLink(UTF16to8(viewModel->GetReviewLinkURL())));
        probe = std::make_unique<quillohostkit::MovieProbe>(active->GetMovie().file);
    } catch (std::exception const& exception) {
        return GiveUpExport(exception.what());
    }
    quillohostkit::OnMainThread(probe->Result(), token,
                                [this, asked = probe.get(), output](auto const& found) {
                                    if (asked != probe.get()) return;  // called off
                                    try {
                                        ExportMovie(found.Get(), output);
                                    } catch (std::exception const& exception) {
                                        GiveUpExport(exception.what());
                                    }
                                });
}

void Sharing::ExportMovie(quillohostkit::Movie const& movie, fs::path const& output,
                          quillohostkit::MovieExport::Damaged damaged) {
    exporter = std::make_unique<quillohostkit::MovieExport>(
        movie, output, [this](double fraction) { viewModel->SetEncodingProgress(fraction); },
        damaged);
    // Called off, the exporter is gone, and its result with it.
    auto const result = exporter->Result();
    quillohostkit::OnMainThread(result, token, [this, movie, output](auto const& done) {
        if (!exporter) return;
        exporter.reset();
        try {
            if (auto const thrown = done.GetException()) std::rethrow_exception(thrown);
        } catch (quillohostkit::DamagedMovie const& refused) {
            auto const asked = share.shareID;
            bool const isAccepted = hooks.acceptsDamage(refused.what());
            // It may have ended while the user was asked.
            if (asked != share.shareID || phase != Phase::Exporting) return;
            if (isAccepted)
                return ExportMovie(movie, output, quillohostkit::MovieExport::Damaged::Accept);
        } catch (...) {
        }
        if (auto const thrown = done.GetException()) return GiveUpExport(MessageOf(thrown));
        SetPhase(Phase::Uploading);
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    });
}

void Sharing::GiveUpExport(std::string const& why) {
    exportFailure = why;
    viewModel->SetEncodingStatus({EncodingStatus::UploadFailed});
}

void Sharing::UploadProgressed(quillomoxui::ShareInfo const& uploading, double fraction) {
    if (uploading.shareID == share.shareID && fraction == 1) SetPhase(Phase::Finishing);
}

void Sharing::ShareFinished(quillomoxui::ShareInfo const& finished) {
    if (finished.shareID != share.shareID) return;  // another version of it is being shared
    if (auto const path = destinations.GetIDPath(
            moxcore::utility::Guid(active->Stored(assetdata::kUploadFolderGuid)));
        !path.empty())
        active->SetIDPath(path);
    auto const hint = service.HowToOpen(active->Stored(assetdata::kReviewLinkURL));
    hooks.tell("\"" + GetSharedName() + "\" is shared as version " +
               std::to_string(active->Version()) + (hint.empty() ? "." : ". " + hint));
    SetPhase(Phase::Idle);
    if (!IsPopupOpen()) End();
}

void Sharing::ShareFailed(quillomoxui::ShareInfo const& failed, ShareFailure const& failure) {
    if (failed.shareID != share.shareID) return hooks.tell(failure.text);
    probe.reset();
    exporter.reset();
    bool const hasMovie = phase == Phase::Uploading || phase == Phase::Finishing;
    if (failure.reason == ShareFailureReason::Cancelled)
        hooks.tell("The share of \"" + GetSharedName() + "\" was cancelled.");
    else if (failure.reason == ShareFailureReason::NotExported)
        hooks.tell(exportFailure);
    else
        hooks.tell(failure.text + (hasMovie ? quillohostkit::WhereItIsKept(exported) : ""));
    SetPhase(Phase::Idle);
    if (IsSharing()) return;  // overtaken: the next one's beginning comes
    // Without a link to show the popup goes back to where it can be tried again.
    viewModel->SetEncodingStatus({EncodingStatus::UploadFailed});
    if (IsPopupOpen())
        OpenPopup();
    else
        End();
}

/// Nobody looks at a share that has ended.
void Sharing::End() {
    shareLocks.Release();
    if (active != open) ActivateOpen();
}

void Sharing::SetPhase(Phase newPhase) {
    phase = newPhase;
    hooks.onChanged();
}

}  // namespace quillohost::editor
