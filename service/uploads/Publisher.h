#pragma once

#include <cstdint>
#include <optional>
#include <string>

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

/// A movie that came out of an upload, as `GET /v1/uploads/{id}/asset` tells it.
struct PublishedAsset {
    std::string id;
    std::string name;
    std::int64_t version = 1;
    std::optional<std::string> stack;
    std::string folder;
    std::string sha256;  ///< hex
    std::int64_t bytes = 0;
};

/// Makes a complete upload a movie: on the disk first, under its final name next, in the store
/// last. Whatever instant the process ends at, the store lists whole movies only, and a movie that
/// stands under its final name can be recorded later. An unfinished upload reserves its version
/// stack, so that recording is not refused; a movie for which it is all the same is set aside: kept
/// in a folder of its own, while the upload is forgotten. Any thread, one at a time per upload.
class Publisher {
public:
    Publisher(DataDirectory const& directory, Store& store, ChangeFeed& changes, Clock clock);

    /// In the transaction that records an unfinished upload of `user` into `folder`: checks that it
    /// may join the version stack, and that it and the unfinished uploads which have reserved the
    /// stack leave each other able to. Throws ApiError 403 or 409.
    static void AdmitToStack(Database& database, std::string const& user, Node const& folder,
                             std::string const& stack);

    /// Publishes the upload, all bytes of which are in `file`; `whole` has been fed them.
    void Publish(UploadRecord const& upload, File& file, Digest const& whole);

    /// Records a movie that an earlier `Publish` put under its final name without getting further,
    /// or sets it aside and logs a line. Returns whether there was one.
    bool FinishInterrupted(UploadRecord const& upload);

    [[nodiscard]] PublishedAsset Find(UploadRecord const& upload) const;

private:
    void Record(UploadRecord const& upload, Digest const& whole);
    void SetAside(UploadRecord const& upload, std::string const& reason);

    DataDirectory const& directory;
    Store& store;
    ChangeFeed& changes;
    Clock clock;
};

}  // namespace quilloservice
