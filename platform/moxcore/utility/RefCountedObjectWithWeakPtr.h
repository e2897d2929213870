#pragma once

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <memory>
#include <mutex>

#include "moxcore/Export.h"

namespace moxcore::utility {

/// Base of objects that count their references inside themselves and are held by
/// boost::intrusive_ptr. References may be taken and dropped on any thread; whichever thread drops
/// the last one, the object is destroyed on the main thread (at once when that is the current one).
class MOXCORE_API RefCountedObjectWithWeakPtr {
public:
    /// State shared by the object and its weak pointers; it outlives the object.
    class MOXCORE_API WeakCell {
    public:
        /// A new strong reference, or null once the last one has been dropped.
        [[nodiscard]] RefCountedObjectWithWeakPtr* Acquire();

    private:
        friend class RefCountedObjectWithWeakPtr;
        std::mutex mutex;                               // orders Acquire against the last release
        RefCountedObjectWithWeakPtr* object = nullptr;  // guarded by mutex
    };

    RefCountedObjectWithWeakPtr(RefCountedObjectWithWeakPtr const&) = delete;
    RefCountedObjectWithWeakPtr& operator=(RefCountedObjectWithWeakPtr const&) = delete;

    /// Adds a strong reference; boost::intrusive_ptr calls it. Any thread.
    void AddReference() const noexcept;
    /// Drops a strong reference. The last one destroys the object on the main thread. Any thread.
    void ReleaseReference() const noexcept;

    /// For weak pointers. Never null.
    [[nodiscard]] std::shared_ptr<WeakCell> GetWeakCell() const { return cell; }

protected:
    RefCountedObjectWithWeakPtr();
    virtual ~RefCountedObjectWithWeakPtr();

private:
    std::shared_ptr<WeakCell> cell;
    mutable std::atomic<int> references{0};
};

inline void intrusive_ptr_add_ref(RefCountedObjectWithWeakPtr const* object) noexcept {
    object->AddReference();
}
inline void intrusive_ptr_release(RefCountedObjectWithWeakPtr const* object) noexcept {
    object->ReleaseReference();
}

/// A reference that does not keep its object alive. Any thread; one instance by one thread at a
/// time.
template <class T>
class RefCountedWeakPtr {
public:
    RefCountedWeakPtr() = default;
    /// Refers to `target`, or to none when it is null.
    explicit RefCountedWeakPtr(T* target)
        : target(target), cell(target ? target->GetWeakCell() : nullptr) {}

    /// The object, kept alive by the result, or null when it is gone.
    [[nodiscard]] boost::intrusive_ptr<T> Lock() const {
        if (!cell || !cell->Acquire()) return nullptr;
        return boost::intrusive_ptr<T>(target, false);
    }

private:
    T* target = nullptr;
    std::shared_ptr<RefCountedObjectWithWeakPtr::WeakCell> cell;
};

}  // namespace moxcore::utility
