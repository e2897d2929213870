#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "moxcore/async/Future.h"
#include "quillosdk/Records.h"
#include "quillosdk/ResponseWith.h"
#include "quillosdk/RetryPolicy.h"

namespace quillosdk {

class Session;

/// A file to upload: where it is and where it goes.
class UploadRequest {
public:
    /// Bytes that the service has or that are on their way to it, and bytes in all. Called on the
    /// transport's and the executor's threads, by one at a time, once for each thousandth of the
    /// whole at most; never backwards unless the service has lost the upload and it begins anew;
    /// last of all with the two equal, once the file is published. What it throws fails the upload.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t total)>;

    UploadRequest(quillocommon::Guid const& folderID, std::string path, Progress progress)
        : folderID(folderID), path(std::move(path)), progress(std::move(progress)) {}

    /// The version stack that the file joins as its newest version, made on first use. All zero:
    /// none.
    void SetAutoversionId(quillocommon::Guid const& id) { autoversionID = id; }

    /// Hears since when the upload has waited for a service that cannot be reached or takes nothing
    /// for now, and nothing once it goes on, succeeds or fails. The upload goes on by itself.
    /// Called on the same threads as the progress, by one at a time; must not throw.
    void SetWaitListener(RetryPolicy::WaitListener listener) { onWait = std::move(listener); }

    [[nodiscard]] quillocommon::Guid const& FolderID() const { return folderID; }
    [[nodiscard]] quillocommon::Guid const& AutoversionID() const { return autoversionID; }
    [[nodiscard]] std::string const& Path() const { return path; }
    [[nodiscard]] Progress const& GetProgress() const { return progress; }
    [[nodiscard]] RetryPolicy::WaitListener const& GetWaitListener() const { return onWait; }

private:
    quillocommon::Guid folderID;
    quillocommon::Guid autoversionID;
    std::string path;  // UTF-8
    Progress progress;
    RetryPolicy::WaitListener onWait;
};

class UploadResponse : public ResponseWith<Asset> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] Asset const& GetAssetObject() const { return content; }
};

/// The results that uploads fail with besides the transport's.
enum UploadResult : std::int32_t {
    kFileUnreadable = static_cast<std::int32_t>(0xBB570001),   ///< missing, empty, no regular file
    kFileChanged = static_cast<std::int32_t>(0xBB570002),      ///< while it was read
    kContentMismatch = static_cast<std::int32_t>(0xBB570003),  ///< the service stored other bytes
    kUploadLost =
        static_cast<std::int32_t>(0xBB570004)  ///< the service knows nothing of it any more
};

/// Uploads files by the tus protocol, version 1.0.0 (core, creation, checksum; concatenation and
/// termination where the service offers them). Any thread.
class QUILLOSERVICES_API TransferManager {
public:
    explicit TransferManager(std::shared_ptr<Session> session);

    /// Sends the file in pieces of 8 MiB, none of which is kept in memory, and completes once the
    /// service has published it with the SHA-256 of the file as it was read here. Up
    /// to eight pieces are under way at the same time, where that brings more and the file is
    /// larger than three. A service that does not join partial uploads gets one after the other. A
    /// cut connection, a lost answer, a piece refused for its checksum and a service that is down
    /// for a while are repeated (see RetryPolicy) from the offset that the service confirms;
    /// repeating never makes a second version. Fails when the file cannot be read, is empty, or
    /// changes while it is read, with a message that says so; a refusal by the service is an
    /// unsuccessful response. `uploadID` receives the key under which the service knows this
    /// upload.
    moxcore::async::Future<std::shared_ptr<UploadResponse>> Upload(UploadRequest const& request,
                                                                   quillocommon::Guid& uploadID);

private:
    std::shared_ptr<Session> session;
};

}  // namespace quillosdk
