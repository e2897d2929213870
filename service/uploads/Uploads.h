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

/// What a client asks for when it creates an upload, its values checked for form.
struct NewUpload {
    std::string name;
    std::string folder;
    std::optional<std::string> stack;
    std::string mediaType;
    std::string metadata;
    std::int64_t length = 0;
};

/// Resumable uploads. Every function throws ApiError when the answer is an error. Any thread. One
/// request appends to an upload at a time; a newer one takes it over, so that a connection which
/// nobody is left to write to holds nothing up.
class Uploads {
public:
    static constexpr std::int64_t kMaxBytes = std::int64_t{1} << 40;
    static constexpr std::int64_t kForgetAfterSeconds = 7 * 24 * 3600;

    /// What uploads leave free on the disk for the store itself, which has to go on recording.
    static constexpr std::int64_t kReserveBytes = 64 << 20;

    /// How many bytes the disk has free.
    using FreeBytes = std::function<std::int64_t()>;

    /// Asks the directory how much of its disk is free, or `freeBytes` when there is one.
    Uploads(DataDirectory const& directory, Store& store, ChangeFeed& changes, Clock clock,
            FreeBytes freeBytes = {});

    /// Records what an earlier process published without recording it, sets aside what cannot be
    /// recorded, and forgets old uploads. What fails is logged and left for later, so that the
    /// service starts all the same.
    void Recover();

    /// Makes an upload, or finds the one that the same request with the same key made. Returns its
    /// ID. Throws ApiError 507 when the movie would not fit on the disk beside what the unfinished
    /// uploads still need.
    std::string Create(std::string const& user, NewUpload const& request,
                       std::optional<std::string> const& idempotencyKey);

    [[nodiscard]] UploadRecord Get(std::string const& user, std::string const& id) const;

    /// Begins to append a body. `onOvertaken` runs when another request takes the upload over.
    std::shared_ptr<UploadAppend> BeginAppend(std::string const& user, std::string const& id,
                                              AppendRequest const& request,
                                              std::function<void()> onOvertaken);

    /// The movie that the upload became.
    [[nodiscard]] PublishedAsset Asset(std::string const& user, std::string const& id) const;

private:
    void ForgetOld();
    void Forget(std::string const& id, std::int64_t before);
    LiveUploads::Lease Acquire(std::string const& id);

    DataDirectory const& directory;
    Store& store;
    Clock clock;
    FreeBytes freeBytes;
    Publisher publisher;
    LiveUploads live;
};

}  // namespace quilloservice
