#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/session/DestinationFinder.h"
#include "host/session/Options.h"
#include "host/session/Session.h"
#include "quillohostkit/media/MovieExport.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillohostkit/state/AssetStore.h"
#include "quillohostkit/state/KeyLocks.h"
#include "quillohostkit/state/SharedAsset.h"

namespace quillohost {

/// Shares a movie: drives the library from the sign-in to the link. One share at a time goes on
/// with a movie, and one under a name, as the exported file has that name. Main thread.
class ShareCommand {
public:
    /// The result of a successful share. Identifiers are in their text form.
    struct Result {
        std::string link;
        std::string linkID;
        std::string assetID;
        std::string versionStackID;
        std::string folderID;
        std::string folderPath;  ///< as --to takes it
        std::int64_t version = 1;
        bool isNewLink = true;
        quillohostkit::ExportedFile exported;  ///< gone from the disk
    };

    /// Starts a service when the options name none.
    ShareCommand(Options const& options, MainLoop& loop, ProgressDisplay& display);

    /// A Failure says which step failed. The export is kept once its upload has begun, and the
    /// failure says where.
    Result Run();

    /// The instruction for opening the link; empty when it opens as it is.
    [[nodiscard]] std::string HowToOpen(std::string const& link) const {
        return session.Service().HowToOpen(link);
    }

private:
    using Folder = DestinationFinder::Folder;
    class Heard;

    void ConnectLibrary();
    [[nodiscard]] Folder FindDestination(DestinationFinder& finder);
    void ForgetLostShare(DestinationFinder& finder);
    void TakeLocks();
    [[nodiscard]] quillohostkit::ExportedFile Export(quillohostkit::Movie const& movie);
    void Upload(quillohostkit::ExportedFile const& exported);
    void ThrowIfFailed() const;

    Options const& options;
    ProgressDisplay& display;
    MainLoop& loop;
    quillohostkit::MovieProbe const probe;  // works while the session begins
    Session session;
    std::shared_ptr<quillohostkit::AssetStore> store;
    std::shared_ptr<quillohostkit::SharedAsset> const asset;
    std::vector<std::shared_ptr<quillohostkit::KeyLocks::Lock>> locks;
    std::shared_ptr<Heard> const heard;  // of the share, from the library
};

}  // namespace quillohost
