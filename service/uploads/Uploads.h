#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "service/base/Clock.h"
#include "service/uploads/ContentHash.h"
#include "service/uploads/LiveUploads.h"
#include "service/uploads/Publisher.h"
#include "service/uploads/UploadAppend.h"
#include "service/uploads/UploadRecord.h"

namespace quilloservice {

class ChangeFeed;
class DataDirectory;
class Store;

/// A request to create an upload; its values are well-formed.
struct NewUpload {
    std::string name;
    FolderId folder;
    std::optional<StackId> stack;
    std::string mediaType;
    std::string metadata;
    std::int64_t length = 0;

    /// Where a part lies in its movie.
    struct Place {
        WholeId whole;
        std::int64_t offset = 0;
        std::int64_t wholeLength = 0;
    };

    bool isPart = false;           ///< of a movie; then the name may be missing
    bool namesFolder = true;       ///< false: a part whose movie's folder is not known yet
    std::optional<Place> place{};  ///< of a part, if the client says so
};

/// Resumable uploads. Functions throw ApiError for the error responses. Any thread. One request at
/// a time appends to an upload; a newer request takes it over, so that a dead connection does not
/// block the upload.
class Uploads {
public:
    static constexpr std::int64_t kMaxBytes = std::int64_t{1} << 40;
    static constexpr std::int64_t kExpireAfterSeconds = 7 * 24 * 3600;

    /// Disk space that uploads leave free for the store.
    static constexpr std::int64_t kReserveBytes = 64 << 20;

    /// Returns the number of bytes free on the disk.
    using FreeBytes = std::function<std::int64_t()>;

    /// `freeBytes` replaces `directory.FreeBytes()` in tests.
    Uploads(DataDirectory const& directory, Store& store, ChangeFeed& changes, Clock clock,
            FreeBytes freeBytes = {});

    /// To be called at the start. Completes the publications that the former process began, or sets
    /// their movies aside, and deletes old uploads. Failures are logged and retried at the next
    /// start.
    void Recover();

    /// Creates an upload, or returns the one created by an earlier request with the same key.
    /// Throws ApiError 507 if the disk has no room for the movie beside the unfinished uploads.
    UploadId Create(UserId const& user, NewUpload const& request,
                    std::optional<IdempotencyKey> const& key);

    [[nodiscard]] UploadRecord Get(UserId const& user, UploadId const& id) const;

    /// Publishes the movie that these parts make in this order, and ends them. Repeating the call
    /// is safe. If each part was created with its place in the same whole, their bytes lie in one
    /// file already; otherwise they are copied. `metadata` is the movie's, without a length. Throws
    /// ApiError 409 if bytes are missing, and 460, with the parts deleted, if the movie's checksum
    /// is not `contentSha256`.
    UploadId Join(UserId const& user, NewUpload const& movie, std::vector<UploadId> const& parts,
                  std::optional<std::string> const& contentSha256);

    /// Deletes an unfinished upload; an append to it is cut off. Throws ApiError 403 if it is
    /// published.
    void Delete(UserId const& user, UploadId const& id);

    /// Starts to append a body. `onOvertaken` is called if another request takes the upload over.
    std::shared_ptr<UploadAppend> BeginAppend(UserId const& user, UploadId const& id,
                                              AppendRequest const& request,
                                              std::function<void()> onOvertaken);

    /// The movie of a complete upload. Throws ApiError 409 if bytes are missing.
    [[nodiscard]] PublishedAsset Asset(UserId const& user, UploadId const& id) const;

private:
    void DeleteOld();
    UploadId Insert(Database& database, UserId const& user, NewUpload const& request);
    UploadId InsertPart(Database& database, UploadRecord part);
    UploadId InsertJoined(Database& database, UserId const& user, NewUpload const& movie,
                          std::vector<UploadId> const& parts);
    void CheckRoom(Database& database, std::int64_t bytes) const;
    void DeleteIdle(UploadId const& id, std::int64_t before);
    bool DeleteLeased(UploadRecord const& upload, std::int64_t before);
    LiveUploads::Lease Acquire(UploadId const& id);
    void CheckStored(UploadId const& file);
    void PublishJoined(UploadRecord const& upload, std::optional<std::string> const& contentSha256);
    void CopyParts(UploadRecord const& upload);

    DataDirectory const& directory;
    Store& store;
    Clock clock;
    FreeBytes freeBytes;
    Publisher publisher;
    ContentHashes hashes;
    LiveUploads live;
};

}  // namespace quilloservice
