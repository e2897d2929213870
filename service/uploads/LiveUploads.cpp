#include "service/uploads/LiveUploads.h"

#include <utility>

namespace quilloservice {

LiveUploads::Lease::Lease(Lease&& other) noexcept
    : owner_(std::exchange(other.owner_, nullptr)),
      id_(std::move(other.id_)),
      progress_(other.progress_),
      keep_(other.keep_) {}

LiveUploads::Lease::~Lease() {
    if (owner_ == nullptr) return;
    std::scoped_lock lock(owner_->mutex_);
    if (keep_) {
        Entry& entry = owner_->entries_.find(id_)->second;
        entry.leased = false;
        entry.holder.reset();
    } else {
        owner_->entries_.erase(id_);
    }
}

std::optional<LiveUploads::Lease> LiveUploads::TryAcquire(std::string const& id) {
    std::scoped_lock lock(mutex_);
    Entry& entry = entries_[id];
    if (std::exchange(entry.leased, true)) return std::nullopt;
    return Lease(*this, id, entry.progress);
}

std::shared_ptr<UploadAppend> LiveUploads::Holder(std::string const& id) {
    std::scoped_lock lock(mutex_);
    auto entry = entries_.find(id);
    return entry == entries_.end() ? nullptr : entry->second.holder.lock();
}

void LiveUploads::SetHolder(std::string const& id, std::shared_ptr<UploadAppend> const& append) {
    std::scoped_lock lock(mutex_);
    if (auto entry = entries_.find(id); entry != entries_.end()) entry->second.holder = append;
}

}  // namespace quilloservice
