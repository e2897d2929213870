#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "service/store/Ids.h"

namespace quilloservice {

class Database;

/// What becomes of an upload. The numbers are those of the store.
enum class UploadKind {
    Movie = 0,   ///< a movie, from its first byte to its last
    Part = 1,    ///< a stretch of a movie, which is joined with others
    Joined = 2,  ///< a movie made of parts
};

/// An upload in the store.
struct UploadRecord {
    UploadId id;
    UserId user;
    FileId asset;     ///< the movie's ID once it is published
    FolderId folder;  ///< nil for a part that names none
    std::optional<StackId> stack;
    std::string name;
    std::string mediaType;
    std::string metadata;  ///< as the client sent it
    std::int64_t length = 0;
    /// The offset from which the client continues. Reaches `length` in the transaction that
    /// publishes the movie, for a part when its last byte has come.
    std::int64_t confirmed = 0;
    bool published = false;

    UploadKind kind = UploadKind::Movie;
    UploadId file;           ///< the upload whose file holds the bytes: this one, or another part
    std::int64_t place = 0;  ///< where the bytes begin in that file
    std::optional<WholeId> whole;  ///< the movie to which a part belongs; nothing: parts of its own
    std::int64_t wholeLength = 0;
    std::vector<UploadId> parts;  ///< of a joined upload, in their order

    /// Whether the file holds this upload's bytes and nothing else.
    [[nodiscard]] bool OwnsFile() const { return !whole; }
    [[nodiscard]] bool IsComplete() const { return confirmed == length; }
};

std::optional<UploadRecord> FindUpload(Database& database, UploadId const& id);

/// The joined upload of exactly these parts, in this order; nothing if there is none.
std::optional<UploadId> FindJoined(Database& database, UserId const& user,
                                   std::vector<UploadId> const& parts);

/// The unfinished parts of a user's movie, by their place.
std::vector<UploadRecord> PartsOf(Database& database, UserId const& user, WholeId const& whole);

/// The unfinished movie, or the unfinished parts, whose bytes are in this file, by their place.
std::vector<UploadRecord> UploadsIn(Database& database, UploadId const& file);

void InsertUpload(Database& database, UploadRecord const& upload, std::int64_t now);
void SetConfirmed(Database& database, UploadId const& id, std::int64_t confirmed, std::int64_t now);

/// How many bytes at the start of a file are confirmed without a gap.
std::int64_t ConfirmedFront(Database& database, UploadId const& file);

/// How many bytes the unfinished uploads still need on the disk, including parts of their movies
/// that are not created yet.
std::int64_t BytesOutstanding(Database& database);

/// The unfinished uploads that have not grown since `before`. The parts of a movie count as one.
std::vector<UploadId> UnfinishedUploads(Database& database, std::int64_t before);

/// Deletes an unfinished upload and its idempotency key, unless it has grown since `before`.
/// Returns whether it was deleted.
bool DeleteUpload(Database& database, UploadId const& id,
                  std::int64_t before = std::numeric_limits<std::int64_t>::max());

}  // namespace quilloservice
