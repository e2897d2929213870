#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "service/base/Clock.h"
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

    /// Starts to append a body. `onOvertaken` is called if another request takes the upload over.
    std::shared_ptr<UploadAppend> BeginAppend(UserId const& user, UploadId const& id,
                                              AppendRequest const& request,
                                              std::function<void()> onOvertaken);

    /// The movie of a complete upload. Throws ApiError 409 if bytes are missing.
    [[nodiscard]] PublishedAsset Asset(UserId const& user, UploadId const& id) const;

private:
    void DeleteOld();
    UploadId Insert(Database& database, UserId const& user, NewUpload const& request);
    void Delete(UploadId const& id, std::int64_t before);
    LiveUploads::Lease Acquire(UploadId const& id);

    DataDirectory const& directory;
    Store& store;
    Clock clock;
    FreeBytes freeBytes;
    Publisher publisher;
    LiveUploads live;
};

}  // namespace quilloservice
