#include "service/uploads/LiveUploads.h"

#include <utility>

namespace quilloservice {

LiveUploads::Lease::Lease(Lease&& other) noexcept
    : owner(std::exchange(other.owner, nullptr)), id(std::move(other.id)) {}

LiveUploads::Lease::~Lease() {
    if (owner == nullptr) return;
    std::scoped_lock lock(owner->mutex);
    owner->leased.erase(id);
}

std::optional<LiveUploads::Lease> LiveUploads::TryAcquire(UploadId const& id) {
    std::scoped_lock lock(mutex);
    if (!leased.try_emplace(id).second) return std::nullopt;
    return Lease(*this, id);
}

std::shared_ptr<UploadAppend> LiveUploads::Holder(UploadId const& id) {
    std::scoped_lock lock(mutex);
    auto entry = leased.find(id);
    return entry == leased.end() ? nullptr : entry->second.lock();
}

void LiveUploads::SetHolder(UploadId const& id, std::shared_ptr<UploadAppend> const& append) {
    std::scoped_lock lock(mutex);
    if (auto entry = leased.find(id); entry != leased.end()) entry->second = append;
}

}  // namespace quilloservice
