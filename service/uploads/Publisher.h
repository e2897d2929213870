#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "service/base/Clock.h"
#include "service/uploads/UploadRecord.h"

namespace quilloservice {

class ChangeFeed;
class DataDirectory;
class Database;
class Digest;
class File;
class Store;
struct Node;

/// The movie of a complete upload.
struct PublishedAsset {
    FileId id;
    std::string name;
    std::int64_t version = 1;
    std::optional<StackId> stack;
    FolderId folder;
    std::string sha256;  ///< hex
    std::int64_t bytes = 0;
};

/// Publishes complete uploads as movies: syncs the file, renames it to its final name, then records
/// it in the store. A crash at any point leaves only whole movies in the store, and a file under
/// its final name can be recorded later. An unfinished upload reserves its version stack, so that
/// it can be recorded in the end. If it cannot, the file is set aside in a folder of its own and
/// the upload deleted. Any thread, one at a time per upload.
class Publisher {
public:
    Publisher(DataDirectory const& directory, Store& store, ChangeFeed& changes, Clock clock);

    /// Checks that a new upload of `user` into `folder` may join the version stack, and that
    /// neither it nor the unfinished uploads that have reserved the stack would keep each other
    /// from being recorded. Throws ApiError 403 or 409. Call in the transaction that creates the
    /// upload.
    static void AdmitToStack(Database& database, UserId const& user, Node const& folder,
                             StackId const& stack);

    /// Publishes a movie or joined upload; the parts of the latter end with it. `file` holds all
    /// its bytes, and `whole` is their checksum.
    void Publish(UploadRecord const& upload, File& file, Digest const& whole);

    /// Continues a `Publish` that ended after renaming the file: records the movie, or sets it
    /// aside and logs a line. Returns whether there was such a file.
    bool FinishInterrupted(UploadRecord const& upload);

    [[nodiscard]] PublishedAsset Find(UploadRecord const& upload) const;

private:
    void Record(UploadRecord const& upload, Digest const& whole);
    void SetAside(UploadRecord const& upload, std::string const& reason);
    void RemoveFilesOf(std::vector<UploadId> const& parts);

    DataDirectory const& directory;
    Store& store;
    ChangeFeed& changes;
    Clock clock;
};

}  // namespace quilloservice
