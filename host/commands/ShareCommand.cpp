#include "host/commands/ShareCommand.h"

#include <optional>
#include <utility>

#include "host/state/HostFiles.h"
#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/state/AssetName.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

namespace assetdata = quillomoxui::assetdata;
using moxcore::string::UTF16String;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;
using quillocommon::Step;
using quillohostkit::FailureKind;
using quillomoxui::EncodingStatus;
using quillomoxui::ShareFailureReason;
using quillomoxui::ShareInfo;

FailureKind KindOf(ShareFailureReason reason) {
    switch (reason) {
        case ShareFailureReason::NoLink:
        case ShareFailureReason::NotOnLink:
            return FailureKind::Link;
        case ShareFailureReason::NotExported:
            return FailureKind::Export;
        case ShareFailureReason::NotUploaded:
        case ShareFailureReason::OtherUser:
            return FailureKind::Upload;
        case ShareFailureReason::Cancelled:
        case ShareFailureReason::Overtaken:
        case ShareFailureReason::HostCallback:
        case ShareFailureReason::LibraryClosed:
            break;
    }
    return FailureKind::Other;
}

}  // namespace

/// Collects the library's events of the share.
class ShareCommand::Heard final : public quillomoxui::ShareEvents {
public:
    explicit Heard(ProgressDisplay& display) : display(display) {}

    std::optional<std::filesystem::path> exportRequest;  // where the library wants the file
    bool isFinished = false;
    std::optional<quillomoxui::ShareFailure> failure;

private:
    void ExportWanted(ShareInfo const& /*share*/, UTF16String const& outputFilePath,
                      UTF16String const& /*processingID*/) override {
        exportRequest = UTF16to8(outputFilePath);
    }
    void UploadProgressed(ShareInfo const& /*share*/, double fraction) override {
        display.Update(fraction);
    }
    void ShareFinished(ShareInfo const& /*share*/) override { isFinished = true; }
    void ShareFailed(ShareInfo const& /*share*/, quillomoxui::ShareFailure const& why) override {
        failure = why;
    }

    ProgressDisplay& display;
};

ShareCommand::ShareCommand(Options const& options, MainLoop& loop, ProgressDisplay& display)
    : options(options),
      display(display),
      loop(loop),
      probe(options.movie),
      session(options, loop, display),
      store(std::make_shared<quillohostkit::AssetStore>(OwnHostFile("assets.sqlite"),
                                                        session.Service().ServiceName())),
      // Which asset it is hangs on the file alone; what kind of movie is awaited later.
      asset(std::make_shared<quillohostkit::SharedAsset>(
          store, store->AssetOf(probe.File()),
          options.name.value_or(quillohostkit::DefaultAssetName(probe.File())))),
      heard(std::make_shared<Heard>(display)) {
    // A file that is no movie ends the share at once, at any stage.
    probe.Result().OnComplete([&loop](moxcore::async::Future<quillohostkit::Movie> const& result) {
        auto const refusal = result.GetException();
        if (moxcore::config::ExtractResultFromException(refusal) < 0) loop.Fail(refusal);
    });
}

ShareCommand::Result ShareCommand::Run() {
    auto& viewModel = session.ViewModel();
    ConnectLibrary();
    TakeLocks();

    display.Tell(Text("$$$/Vistrel/quillo-host/SignIn/UnderWay=Signing in to {service}",
                      {{"service", session.Service().Address()}}));
    auto const user = session.SignIn();
    DestinationFinder finder(session, user);
    ForgetLostShare(finder);
    auto const movie = loop.Await(probe.Result());
    auto const folder = FindDestination(finder);
    auto const idPath = quillohostkit::IDPathOf(folder);
    Result result;
    result.folderPath = quillohostkit::JoinNamePath(quillohostkit::NamePathOf(folder));
    display.Tell(
        Text("$$$/Vistrel/quillo-host/Share/To=Sharing to {path}", {{"path", result.folderPath}}));

    auto const earlierLink = asset->Stored(assetdata::kReviewLinkGuid);

    if (!folder->FindSelfOrAncestorOfType<quillomoxui::QuilloProject>())
        throw quillohostkit::Failure(FailureKind::Location,
                                     Text("$$$/Vistrel/quillo-host/Share/FolderGone=The folder has "
                                          "been moved or removed meanwhile; share again."));
    user->SetSelection(folder);
    viewModel.LocationPickerSelectionCommitted();
    viewModel.ProcessAssetForReview();
    session.WaitUntil({Step::CreateReviewLink},
                      [this] { return heard->exportRequest || heard->failure; });
    ThrowIfFailed();
    result.link = asset->CheckLink(UTF16to8(viewModel.GetReviewLinkURL()));
    result.exported = Export(movie);
    Upload(result.exported);
    asset->SetIDPath(idPath);

    result.linkID = asset->Stored(assetdata::kReviewLinkGuid);
    result.assetID = asset->Stored(assetdata::kUploadedAssetGuid);
    result.versionStackID = asset->Stored(assetdata::kVersionStackGuid);
    result.folderID = asset->Stored(assetdata::kUploadFolderGuid);
    result.version = asset->Version();
    result.isNewLink = result.linkID != earlierLink;
    return result;
}

void ShareCommand::ConnectLibrary() {
    auto& viewModel = session.ViewModel();
    viewModel.SetActiveAssetName(UTF8to16(asset->GetName()));
    quillohostkit::ConnectStore(
        viewModel, [shared = asset] { return shared; },
        [this](auto const& thrown) { loop.Fail(thrown); });
    viewModel.SetAssetProcessingMethod([](auto const&...) {});  // ExportWanted asks for it
    viewModel.ObserveShares(heard);
}

ShareCommand::Folder ShareCommand::FindDestination(DestinationFinder& finder) {
    if (!options.to.empty()) return finder.FindByNamePath(options.to);
    auto const path = asset->GetIDPath();
    if (auto folder = finder.FindByIDPath(path)) return folder;
    if (!path.empty())
        display.Tell(
            Text("$$$/Vistrel/quillo-host/Share/LastGone=The folder that this movie was shared to "
                 "last is gone."));
    return finder.FindFirstProject();
}

void ShareCommand::ForgetLostShare(DestinationFinder& finder) {
    auto const folder = finder.FindByIDPath(asset->GetIDPath());
    if (!folder || finder.Holds(folder, Guid(asset->Stored(assetdata::kVersionStackGuid)))) return;
    display.Tell(
        Text("$$$/Vistrel/quillo-host/Share/Lost=The service no longer has what was shared of this "
             "movie; sharing it anew."));
    asset->ForgetShares();
}

void ShareCommand::TakeLocks() {
    for (auto const& key : asset->LockKeys(session.ViewModel().GetOutputFileName()))
        locks.push_back(loop.Await(session.Locks().Take(key, [this] {
            display.Tell(
                Text("$$$/Vistrel/quillo-host/Share/Waiting=Waiting for another quillo-host that "
                     "shares this movie or name."));
        })));
}

quillohostkit::ExportedFile ShareCommand::Export(quillohostkit::Movie const& movie) {
    auto& viewModel = session.ViewModel();
    viewModel.SetEncodingStatus({EncodingStatus::Encoding});
    if (!movie.otherSounds.empty()) {
        std::string others;
        for (auto const& other : movie.otherSounds)
            others += (others.empty() ? "" : ", ") + other;
        display.Tell(
            Text("$$$/Vistrel/quillo-host/Share/Sound=The sound is {sound}; left out: {others}",
                 {{"sound", movie.sound.description}, {"others", others}}));
    }
    display.Begin(Text("$$$/Vistrel/quillo-host/Share/Exporting=Exporting"),
                  [&movie](double fractionPerSecond) {
                      return FormatSpeed(fractionPerSecond * movie.duration.value_or(0));
                  });
    quillohostkit::MovieExport const exporter(
        movie, *heard->exportRequest,
        [this, &viewModel](double fraction) {
            viewModel.SetEncodingProgress(fraction);
            display.Update(fraction);
        },
        options.acceptDamaged ? quillohostkit::MovieExport::Damaged::Accept
                              : quillohostkit::MovieExport::Damaged::Refuse);
    quillohostkit::ExportedFile exported;
    try {
        exported = loop.Await(exporter.Result());
    } catch (quillohostkit::DamagedMovie const& damaged) {
        throw quillohostkit::Failure(damaged.GetKind(),
                                     Text("$$$/Vistrel/quillo-host/Share/Damaged={text} "
                                          "--accept-damaged shares what there is.",
                                          {{"text", damaged.what()}}));
    }
    display.End();
    if (!exported.damage.empty())
        display.Tell(
            Text("$$$/Vistrel/quillo-host/Share/DamageAccepted=The movie is damaged: {damage}; "
                 "that is shared.",
                 {{"damage", exported.damage}}));
    display.Tell(Text("$$$/Vistrel/quillo-host/Share/Exported=Exported {size}",
                      {{"size", FormatBytes(static_cast<double>(exported.bytes))}}));
    return exported;
}

void ShareCommand::Upload(quillohostkit::ExportedFile const& exported) {
    auto& viewModel = session.ViewModel();
    auto const bytes = static_cast<double>(exported.bytes);
    display.Begin(Text("$$$/Vistrel/quillo-host/Share/Uploading=Uploading"),
                  [bytes](double fractionPerSecond) {
                      return Text("$$$/Vistrel/quillo-host/Progress/PerSecond={size}/s",
                                  {{"size", FormatBytes(fractionPerSecond * bytes)}});
                  });
    viewModel.SetEncodingStatus({EncodingStatus::EncodingComplete});
    try {
        // An interruption is thrown from here as well.
        loop.WaitUntil([this] { return heard->isFinished || heard->failure; });
        ThrowIfFailed();
    } catch (quillohostkit::Failure const& failure) {
        throw quillohostkit::Failure(failure.GetKind(),
                                     failure.what() + quillohostkit::WhereItIsKept(exported.file));
    }
    display.End();
    display.Tell(Text("$$$/Vistrel/quillo-host/Share/Uploaded=Uploaded"));
}

void ShareCommand::ThrowIfFailed() const {
    if (heard->failure)
        throw quillohostkit::Failure(KindOf(heard->failure->reason), heard->failure->text);
}

}  // namespace quillohost
