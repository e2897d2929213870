#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "service/Clock.h"
#include "service/UploadRecord.h"

namespace quilloservice {

class ChangeFeed;
class DataDirectory;
class Digest;
class File;
class Store;

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
/// stands under its final name can be recorded later. Any thread, one at a time per upload.
class Publisher {
public:
    Publisher(const DataDirectory& directory, Store& store, ChangeFeed& changes, Clock clock);

    /// Throws ApiError 403 or 409 when `user` may not put a movie into the version stack `stack`.
    static void CheckStack(Database& database, const std::string& user, const std::string& stack);

    /// Publishes the upload, all bytes of which are in `file`; `whole` has been fed them.
    void Publish(const UploadRecord& upload, File& file, const Digest& whole);

    /// Records a movie that an earlier `Publish` put under its final name without getting further.
    /// Returns whether there was one.
    bool FinishInterrupted(const UploadRecord& upload);

    [[nodiscard]] PublishedAsset Find(const UploadRecord& upload) const;

private:
    void Record(const UploadRecord& upload, const Digest& whole);

    const DataDirectory& directory_;
    Store& store_;
    ChangeFeed& changes_;
    Clock clock_;
};

}  // namespace quilloservice
