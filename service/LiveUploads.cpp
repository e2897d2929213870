#include "service/LiveUploads.h"

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
        owner_->entries_.find(id_)->second.leased = false;
    } else {
        owner_->entries_.erase(id_);
    }
}

std::optional<LiveUploads::Lease> LiveUploads::TryAcquire(const std::string& id) {
    std::scoped_lock lock(mutex_);
    Entry& entry = entries_[id];
    if (std::exchange(entry.leased, true)) return std::nullopt;
    return Lease(*this, id, entry.progress);
}

}  // namespace quilloservice
