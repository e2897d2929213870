#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quilloservice {

class Database;

/// What the store knows of an upload. `confirmed` is the offset a client may count on; it reaches
/// `length` in the transaction that publishes the movie and not before.
struct UploadRecord {
    std::string id;
    std::string user;
    std::string asset;  ///< the ID that the movie gets
    std::string folder;
    std::optional<std::string> stack;
    std::string name;
    std::string mediaType;
    std::string metadata;  ///< as the client sent it
    std::int64_t length = 0;
    std::int64_t confirmed = 0;
    bool published = false;
};

std::optional<UploadRecord> FindUpload(Database& database, std::string_view id);
void InsertUpload(Database& database, UploadRecord const& upload, std::int64_t now);
void SetConfirmed(Database& database, std::string_view id, std::int64_t confirmed,
                  std::int64_t now);

/// How many bytes the unfinished uploads will still add to the disk.
std::int64_t BytesToCome(Database& database);

/// IDs of the unfinished uploads that have not grown since `before`.
std::vector<std::string> UnfinishedUploads(Database& database, std::int64_t before);

/// Forgets an unfinished upload and the idempotency key that made it, unless it has grown since
/// `before`. Returns whether it is forgotten.
bool ForgetUpload(Database& database, std::string_view id,
                  std::int64_t before = std::numeric_limits<std::int64_t>::max());

}  // namespace quilloservice
