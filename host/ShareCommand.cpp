#include "host/ShareCommand.h"

#include <climits>
#include <system_error>
#include <utility>

#include "host/AssetName.h"
#include "host/Failure.h"
#include "host/LocationPath.h"
#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillohost {
namespace {

namespace fs = std::filesystem;
using moxcore::string::UTF16String;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;
using quillocommon::Step;
using quillomoxui::EncodingStatus;

// What the library stores with an asset.
constexpr char kUploadedAssetGuid[] = "KVRN.QuilloNative.ShareForReview.UploadedAssetGuid";
constexpr char kUploadFolderGuid[] = "KVRN.QuilloNative.ShareForReview.UploadFolderGuid";
constexpr char kVersionStackGuid[] = "KVRN.QuilloNative.ShareForReview.VersionStackGuid";
constexpr char kReviewLinkGuid[] = "KVRN.QuilloNative.ShareForReview.ReviewLinkGuid";
constexpr char kReviewLinkURL[] = "KVRN.QuilloNative.ShareForReview.ReviewLinkURL";

/// What an exported file's name must leave room for in a directory entry.
constexpr std::size_t kLongestName = NAME_MAX - std::char_traits<char>::length(".mp4") -
                                     std::char_traits<char>::length(Exporter::kUnfinished);

bool IsSameFile(fs::path const& a, fs::path const& b) {
    std::error_code error;  // one of them does not exist
    return fs::equivalent(a, b, error);
}

}  // namespace

ShareCommand::ShareCommand(Options const& options, MainLoop& loop, ProgressDisplay& display)
    : options(options),
      display(display),
      loop(loop),
      probe(options.movie),
      session(options, loop, display),
      store(HostDataFile("assets.sqlite"), session.ServiceName()),
      asset(store.AssetOf(probe.File())) {
    // What is no movie ends the share at once, wherever that has got to.
    probe.Result().OnComplete([&loop](moxcore::async::Future<Movie> const& result) {
        auto const refusal = result.GetException();
        if (moxcore::config::ExtractResultFromException(refusal) < 0) loop.Fail(refusal);
    });
}

ShareCommand::Result ShareCommand::Run() {
    auto& viewModel = session.ViewModel();
    NameAsset();
    ConnectStore();
    TakeLock("movie " + asset.movie.AsStdString());
    ForgetUnfinishedShare();

    display.Tell("Signing in to " + session.Address());
    auto const user = session.SignIn();
    DestinationFinder finder(session, user);
    ForgetLostShare(finder);
    auto const movie = loop.Await(probe.Result());
    auto const folder = FindDestination(finder);
    std::vector<std::string> names;
    std::vector<Guid> way;
    for (auto const& node : WayTo(folder)) {
        names.push_back(NameOf(*node));
        way.push_back(node->GetID());
    }
    Result result;
    result.folderPath = JoinLocationPath(names);
    display.Tell("Sharing to " + result.folderPath);

    TakeLock("name " + UTF16to8(viewModel.GetOutputFileName()));
    auto const earlierLink = Stored(kReviewLinkGuid);

    if (!folder->FindSelfOrAncestorOfType<quillomoxui::QuilloProject>())
        throw Failure(ExitCode::Location,
                      "The folder has been moved or removed meanwhile; share again.");
    user->SetSelection(folder);
    viewModel.LocationPickerSelectionCommitted();
    viewModel.ProcessAssetForReview();
    session.WaitUntil({Step::CreateReviewLink}, [this] { return exportRequest.has_value(); });
    result.exported = Export(movie);
    Upload(result.exported);
    store.WriteWay(asset, way);

    result.link = UTF16to8(viewModel.GetReviewLinkURL());
    result.linkID = Stored(kReviewLinkGuid);
    result.assetID = Stored(kUploadedAssetGuid);
    result.versionStackID = Stored(kVersionStackGuid);
    result.folderID = Stored(kUploadFolderGuid);
    result.version = store.CountVersions(Guid(result.versionStackID));
    result.isNewLink = result.linkID != earlierLink;
    return result;
}

void ShareCommand::NameAsset() {
    auto const given = options.name.value_or(DefaultAssetName(probe.File()));
    auto const name = Shorten(given, kLongestName);
    if (name != given)
        display.Tell("The name is longer than a file's may be; it is shortened to \"" + name +
                     "\".");
    session.ViewModel().SetActiveAssetName(UTF8to16(name));
}

void ShareCommand::ConnectStore() {
    // The library calls these on threads of its own, and an exception would be lost there.
    auto const guarded = [this](auto operation) {
        try {
            return operation();
        } catch (...) {
            loop.Fail(std::current_exception());
            return false;
        }
    };
    session.ViewModel().SetAssetDataMethods(
        [this](Guid& first, Guid& second) {
            first = asset.library;
            second = asset.movie;
            return true;
        },
        [this, guarded](Guid const& first, Guid const& second, UTF16String const& key,
                        UTF16String& value) {
            return guarded([&] {
                auto const found = store.Read({first, second}, UTF16to8(key));
                if (found) value = UTF8to16(*found);
                return found.has_value();
            });
        },
        [this, guarded](Guid const& first, Guid const& second, UTF16String const& key,
                        UTF16String const& value) {
            return guarded([&] {
                AssetStore::Asset const shared{first, second};
                store.Write(shared, UTF16to8(key), UTF16to8(value));
                // Written once for each movie that the service has taken.
                if (UTF16to8(key) == kUploadedAssetGuid)
                    store.AddVersion(Guid(store.Read(shared, kVersionStackGuid).value_or("")));
                return true;
            });
        });
    session.ViewModel().SetAssetProcessingMethod(
        [this](UTF16String const& outputFilePath, UTF16String const&) {
            moxcore::threads::AsyncCallFromMainThread(
                [this, path = UTF16to8(outputFilePath)] { exportRequest = path; }, 0);
        });
}

ShareCommand::Folder ShareCommand::FindDestination(DestinationFinder& finder) {
    if (!options.to.empty()) return finder.FindByNames(options.to);
    auto const way = store.ReadWay(asset);
    if (auto folder = finder.FindByWay(way)) return folder;
    if (!way.empty()) display.Tell("The folder that this movie was shared to last is gone.");
    return finder.FindFirstProject();
}

/// An earlier share may have ended between the upload and the link. The library takes a movie that
/// has been uploaded for one that is on its link; without that mark it puts it there now.
void ShareCommand::ForgetUnfinishedShare() {
    if (store.ReadWay(asset).empty()) store.Forget(asset, kUploadedAssetGuid);
}

/// The service may have lost what was shared: one for development is often begun anew at the same
/// address. Its link would be dead.
void ShareCommand::ForgetLostShare(DestinationFinder& finder) {
    auto const folder = finder.FindByWay(store.ReadWay(asset));
    if (!folder || finder.Holds(folder, Guid(Stored(kVersionStackGuid)))) return;
    display.Tell("The service no longer has what was shared of this movie; sharing it anew.");
    for (char const* key : {kUploadedAssetGuid, kVersionStackGuid, kReviewLinkGuid, kReviewLinkURL})
        store.Forget(asset, key);
}

void ShareCommand::TakeLock(std::string const& key) {
    locks.push_back(loop.Await(session.Locks().Take(key, [this] {
        display.Tell("Waiting for another quillo-host that shares this movie or name.");
    })));
}

ExportedFile ShareCommand::Export(Movie const& movie) {
    auto& viewModel = session.ViewModel();
    if (IsSameFile(movie.file, *exportRequest))
        throw Failure(ExitCode::Export, "The movie lies where it would be exported to, \"" +
                                            movie.file.string() +
                                            "\"; move it, or share it under another --name.");
    viewModel.SetEncodingStatus({EncodingStatus::Encoding});
    display.Begin("Exporting", [&movie](double fractionPerSecond) {
        return FormatSpeed(fractionPerSecond * movie.duration.value_or(0));
    });
    Exporter const exporter(movie, *exportRequest, [this, &viewModel](double fraction) {
        viewModel.SetEncodingProgress(fraction);
        display.Update(fraction);
    });
    auto exported = loop.Await(exporter.Result());
    display.End();
    display.Tell("Exported " + FormatBytes(static_cast<double>(exported.bytes)));
    return exported;
}

void ShareCommand::Upload(ExportedFile const& exported) {
    auto& viewModel = session.ViewModel();
    auto const bytes = static_cast<double>(exported.bytes);
    display.Begin("Uploading", [bytes](double fractionPerSecond) {
        return FormatBytes(fractionPerSecond * bytes) + "/s";
    });
    viewModel.SetEncodingStatus({EncodingStatus::EncodingComplete});
    auto const progress = viewModel.EncodingProgressNotifyingPropertyHost::BindValueChanged(
        [this](double fraction) { display.Update(fraction); });
    auto const view =
        viewModel.CurrentViewIDNotifyingPropertyHost::BindValueChanged([this](auto id) {
            linkIsShown = id == quillomoxui::ShareForReviewViewID::CopyLinkSection;
        });
    auto const status = viewModel.EncodingStatusNotifyingPropertyHost::BindValueChanged(
        [this](EncodingStatus const& now) {
            // Behind what the service's libraries may have said about it.
            if (now.status == EncodingStatus::UploadFailed)
                session.AddFailure({Step::Upload, 0, 0, "The upload has failed; share again."});
        });
    try {
        session.WaitUntil({Step::Upload, Step::AddToReviewLink}, [this] { return linkIsShown; });
    } catch (Failure const& failure) {
        std::error_code error;
        if (!fs::exists(exported.file, error)) throw;
        throw Failure(failure.GetExitCode(), std::string(failure.what()) +
                                                 " The exported movie is kept: \"" +
                                                 exported.file.string() + "\".");
    }
    display.End();
    display.Tell("Uploaded");
}

std::string ShareCommand::HowToOpen(std::string const& link) const {
    auto const data = session.EmbeddedData();
    if (!data) return "";
    auto const command = EmbeddedService::CommandLine(*data);
    if (link.starts_with(session.Address() + "/"))
        return "The link opens while the service runs: " + command;
    auto const formerPort = link.substr(0, link.find("/r/")).substr(link.rfind(':') + 1);
    return "The service could not have its former port " + formerPort +
           ", which the link names; free the port and run: " + command + " --port " + formerPort;
}

std::string ShareCommand::Stored(char const* key) {
    return store.Read(asset, key).value_or("");
}

}  // namespace quillohost
