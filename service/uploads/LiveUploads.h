#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "service/base/Digest.h"

namespace quilloservice {

class UploadAppend;

/// The uploads that grew in this process: who is appending, and the running checksum of the whole
/// movie, so that publishing need not read the file again. Any thread.
class LiveUploads {
public:
    /// The running checksum of the upload's first `offset` bytes.
    struct Progress {
        Digest digest;
        std::int64_t offset = 0;
    };

    /// The only right to append to one upload, until its end.
    class Lease {
    public:
        Lease(Lease&& other) noexcept;
        ~Lease();

        /// Belongs to the holder of the lease.
        [[nodiscard]] Progress& GetProgress() const { return *progress; }

        /// Lets the checksum go: the upload is published, or the file says better.
        void Forget() { keep = false; }
        /// Keeps the checksum for the next request.
        void Keep() { keep = true; }

    private:
        friend class LiveUploads;
        Lease(LiveUploads& owner, std::string id, Progress& progress)
            : owner(&owner), id(std::move(id)), progress(&progress) {}

        LiveUploads* owner;
        std::string id;
        Progress* progress;
        bool keep = false;
    };

    /// Nothing when another request holds the lease of this upload.
    std::optional<Lease> TryAcquire(std::string const& id);

    /// The append that holds the lease, where there is one and it was named.
    std::shared_ptr<UploadAppend> Holder(std::string const& id);
    void SetHolder(std::string const& id, std::shared_ptr<UploadAppend> const& append);

private:
    struct Entry {
        Progress progress;  // the lease's holder
        bool leased = false;
        std::weak_ptr<UploadAppend> holder{};
    };

    std::mutex mutex;
    std::map<std::string, Entry> entries;  // mutex
};

}  // namespace quilloservice
