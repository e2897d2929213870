#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "service/base/Digest.h"
#include "service/store/Ids.h"

namespace quilloservice {

class UploadAppend;

/// The state of uploads in memory: which append holds the lease, and the running checksum of the
/// movie, so that publishing does not read the file again. Any thread.
class LiveUploads {
public:
    /// The running checksum of the upload's first `offset` bytes.
    struct Progress {
        Digest digest;
        std::int64_t offset = 0;
    };

    /// The exclusive right to append to one upload. The destructor gives it back.
    class Lease {
    public:
        Lease(Lease&& other) noexcept;
        ~Lease();

        /// Only the holder of the lease may use it.
        [[nodiscard]] Progress& GetProgress() const { return *progress; }

        /// The checksum is discarded with the lease: the upload is published, or the checksum has
        /// to be read from the file.
        void DiscardChecksum() { keep = false; }
        /// The checksum is kept for the next lease.
        void KeepChecksum() { keep = true; }

    private:
        friend class LiveUploads;
        Lease(LiveUploads& owner, UploadId id, Progress& progress)
            : owner(&owner), id(std::move(id)), progress(&progress) {}

        LiveUploads* owner;
        UploadId id;
        Progress* progress;
        bool keep = false;
    };

    /// The lease of an upload; nothing if it is taken.
    std::optional<Lease> TryAcquire(UploadId const& id);

    /// The append that holds the lease; nullptr if there is none or SetHolder was not called yet.
    std::shared_ptr<UploadAppend> Holder(UploadId const& id);
    void SetHolder(UploadId const& id, std::shared_ptr<UploadAppend> const& append);

private:
    struct Entry {
        Progress progress;  // only for the lease's holder
        bool leased = false;
        std::weak_ptr<UploadAppend> holder{};
    };

    std::mutex mutex;
    std::unordered_map<UploadId, Entry> entries;  // mutex
};

}  // namespace quilloservice
