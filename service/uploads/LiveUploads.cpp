#include "service/uploads/LiveUploads.h"

#include <utility>

namespace quilloservice {

LiveUploads::Lease::Lease(Lease&& other) noexcept
    : owner(std::exchange(other.owner, nullptr)),
      id(std::move(other.id)),
      progress(other.progress),
      keep(other.keep) {}

LiveUploads::Lease::~Lease() {
    if (owner == nullptr) return;
    std::scoped_lock lock(owner->mutex);
    if (keep) {
        Entry& entry = owner->entries.find(id)->second;
        entry.leased = false;
        entry.holder.reset();
    } else {
        owner->entries.erase(id);
    }
}

std::optional<LiveUploads::Lease> LiveUploads::TryAcquire(UploadId const& id) {
    std::scoped_lock lock(mutex);
    Entry& entry = entries[id];
    if (std::exchange(entry.leased, true)) return std::nullopt;
    return Lease(*this, id, entry.progress);
}

std::shared_ptr<UploadAppend> LiveUploads::Holder(UploadId const& id) {
    std::scoped_lock lock(mutex);
    auto entry = entries.find(id);
    return entry == entries.end() ? nullptr : entry->second.holder.lock();
}

void LiveUploads::SetHolder(UploadId const& id, std::shared_ptr<UploadAppend> const& append) {
    std::scoped_lock lock(mutex);
    if (auto entry = entries.find(id); entry != entries.end()) entry->second.holder = append;
}

}  // namespace quilloservice
