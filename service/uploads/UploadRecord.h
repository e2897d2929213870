#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "service/store/Ids.h"

namespace quilloservice {

class Database;

/// An upload in the store.
struct UploadRecord {
    UploadId id;
    UserId user;
    FileId asset;  ///< the movie's ID once it is published
    FolderId folder;
    std::optional<StackId> stack;
    std::string name;
    std::string mediaType;
    std::string metadata;  ///< as the client sent it
    std::int64_t length = 0;
    /// The offset from which the client continues. Reaches `length` in the transaction that
    /// publishes the movie.
    std::int64_t confirmed = 0;
    bool published = false;
};

std::optional<UploadRecord> FindUpload(Database& database, UploadId const& id);
void InsertUpload(Database& database, UploadRecord const& upload, std::int64_t now);
void SetConfirmed(Database& database, UploadId const& id, std::int64_t confirmed, std::int64_t now);

/// How many bytes the unfinished uploads still need on the disk.
std::int64_t BytesOutstanding(Database& database);

/// The unfinished uploads that have not grown since `before`.
std::vector<UploadId> UnfinishedUploads(Database& database, std::int64_t before);

/// Deletes an unfinished upload and its idempotency key, unless it has grown since `before`.
/// Returns whether it was deleted.
bool DeleteUpload(Database& database, UploadId const& id,
                  std::int64_t before = std::numeric_limits<std::int64_t>::max());

}  // namespace quilloservice
