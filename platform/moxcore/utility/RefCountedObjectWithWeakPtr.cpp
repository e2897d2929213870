#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/MainThread.h"

namespace moxcore::utility {
namespace {

/// The count of an object that is being destroyed: so far below zero that references which its
/// destructor takes and drops do not destroy it again.
constexpr int kDying = -(1 << 30);

}  // namespace

RefCountedObjectWithWeakPtr* RefCountedObjectWithWeakPtr::WeakCell::Acquire() {
    std::lock_guard lock(mutex);
    if (!object) return nullptr;
    int count = object->references.load(std::memory_order_relaxed);
    while (count > 0) {
        if (object->references.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
            return object;
    }
    return nullptr;
}

RefCountedObjectWithWeakPtr::RefCountedObjectWithWeakPtr() : cell(std::make_shared<WeakCell>()) {
    cell->object = this;
}

RefCountedObjectWithWeakPtr::~RefCountedObjectWithWeakPtr() {
    std::lock_guard lock(cell->mutex);
    cell->object = nullptr;
}

void RefCountedObjectWithWeakPtr::AddReference() const noexcept {
    references.fetch_add(1, std::memory_order_relaxed);
}

void RefCountedObjectWithWeakPtr::ReleaseReference() const noexcept {
    if (references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    references.store(kDying, std::memory_order_relaxed);
    if (threads::MainThread::IsCurrent())
        delete this;
    else
        threads::AsyncCallFromMainThread([this] { delete this; }, 0);
}

}  // namespace moxcore::utility
