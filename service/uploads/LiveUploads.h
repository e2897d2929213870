#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "service/store/Ids.h"

namespace quilloservice {

class UploadAppend;

/// Which uploads are being appended to, and by which request. Any thread.
class LiveUploads {
public:
    /// The exclusive right to append to one upload, or to publish it. The destructor gives it back.
    class Lease {
    public:
        Lease(Lease&& other) noexcept;
        ~Lease();

    private:
        friend class LiveUploads;
        Lease(LiveUploads& owner, UploadId id) : owner(&owner), id(std::move(id)) {}

        LiveUploads* owner;
        UploadId id;
    };

    /// The lease of an upload; nothing if it is taken.
    std::optional<Lease> TryAcquire(UploadId const& id);

    /// The append that holds the lease; nullptr if there is none or SetHolder was not called yet.
    std::shared_ptr<UploadAppend> Holder(UploadId const& id);
    void SetHolder(UploadId const& id, std::shared_ptr<UploadAppend> const& append);

private:
    std::mutex mutex;
    std::unordered_map<UploadId, std::weak_ptr<UploadAppend>> leased;  // mutex
};

}  // namespace quilloservice
