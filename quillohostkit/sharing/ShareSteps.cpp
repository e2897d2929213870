// What the library reports of the share under way, and the export that it asks for.

#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "quillohostkit/media/MovieExport.h"
#include "quillohostkit/sharing/AssetTitle.h"
#include "quillohostkit/sharing/Sharing.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {

using moxcore::config::Text;

namespace assetdata = quillomoxui::assetdata;
using moxcore::string::UTF16to8;
using quillomoxui::EncodingStatus;
using quillomoxui::ShareFailureReason;
using quillomoxui::ShareInfo;

void Sharing::ShareBegan(ShareInfo const& began) {
    share = began;
    title = UTF16to8(began.assetName);
    progress = -1;
    exported.clear();
    exportFailure.clear();
    files->destinations.Settle();
    SetPhase(Phase::Linking);
}

void Sharing::ExportWanted(ShareInfo const& wanted, quillomoxui::UTF16String const& outputFilePath,
                           quillomoxui::UTF16String const& /*processingID*/) {
    WithLocks([this, id = wanted.shareID, output = UTF16to8(outputFilePath)] {
        if (id != share.shareID || phase != Phase::Linking) return;
        try {
            Export(output);
        } catch (...) {
            GiveUpExport(moxcore::config::ExtractMessageFromException(std::current_exception()));
        }
    });
}

void Sharing::Export(std::filesystem::path const& output) {
    // What the exporter needs may be gone with it.
    if (!active->client)
        return GiveUpExport(
            Text("$$$/Vistrel/quillohostkit/Share/WindowClosed=The window that it was shared from "
                 "was closed."));
    if (auto const now = active->client->GetAsset(); now.path == active->asset.path)
        active->asset = now;
    active->sharedRevision = RevisionOf(active->asset);
    exported = output;
    SetPhase(Phase::Exporting);
    viewModel->SetEncodingStatus({EncodingStatus::Encoding});
    static_cast<void>(active->shared->CheckLink(UTF16to8(viewModel->GetReviewLinkURL())));
    run = std::make_unique<ExportRun>(
        active->exporter, active->asset, output,
        ExportJob::State::Hooks{.onProgress = token.Guard([this](double fraction) {
                                    progress = fraction;
                                    viewModel->SetEncodingProgress(fraction);
                                    Changed();
                                }),
                                .onEnd = token.Guard([this](QString const& failure) {
                                    TakeExport(failure.toStdString());
                                })});
}

/// The export has ended. An empty `failure`: the movie is there.
void Sharing::TakeExport(std::string const& failure) {
    run.reset();
    if (!failure.empty()) return GiveUpExport(failure);
    progress = 0;
    SetPhase(Phase::Uploading);
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
}

void Sharing::GiveUpExport(std::string const& why) {
    exportFailure = why;
    viewModel->SetEncodingStatus({EncodingStatus::UploadFailed});
}

void Sharing::UploadProgressed(ShareInfo const& uploading, double fraction) {
    if (uploading.shareID != share.shareID) return;
    progress = fraction;
    if (fraction == 1)
        SetPhase(Phase::Finishing);
    else
        Changed();
}

void Sharing::ShareFinished(ShareInfo const& finished) {
    if (finished.shareID != share.shareID) return;  // another version of it is being shared
    auto const& shared = active->shared;
    if (auto const path = files->destinations.GetIDPath(
            moxcore::utility::Guid(shared->Stored(assetdata::kUploadFolderGuid)));
        !path.empty())
        shared->SetIDPath(path);
    Tell(Text("$$$/Vistrel/quillohostkit/Share/Done=\"{title}\" is shared as version {version}.",
              {{"title", title}, {"version", std::to_string(shared->Version())}}));
    progress = -1;
    SetPhase(Phase::Idle);
    if (active->client) active->client->OnFinished();
    if (!IsPopupOpen()) LeaveShare();
}

void Sharing::ShareFailed(ShareInfo const& failed, quillomoxui::ShareFailure const& failure) {
    if (failed.shareID != share.shareID) return Tell(failure.text);
    run.reset();
    bool const hasMovie = phase == Phase::Uploading || phase == Phase::Finishing;
    auto reason = failure.reason == ShareFailureReason::Cancelled
                      ? Text(
                            "$$$/Vistrel/quillohostkit/Share/Cancelled=The share of \"{title}\" "
                            "was cancelled.",
                            {{"title", title}})
                  : failure.reason == ShareFailureReason::NotExported ? exportFailure
                                                                      : failure.text;
    if (hasMovie) reason += WhereItIsKept(exported);
    Tell(reason);
    progress = -1;
    SetPhase(Phase::Idle);
    if (active && active->client) active->client->OnFailed(reason);
    if (IsSharing()) return;  // overtaken: the next one's beginning comes
    // Without a link to show the popup goes back to where it can be tried again.
    viewModel->SetEncodingStatus({EncodingStatus::UploadFailed});
    if (IsPopupOpen() && active && active->client)
        viewModel->StartShareForReviewPopup();
    else
        LeaveShare();
}

}  // namespace quillohostkit
