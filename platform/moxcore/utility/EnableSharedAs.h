#pragma once

#include <memory>

#include "moxcore/Export.h"

namespace moxcore::utility {

/// The one virtual base through which an object that is owned by a std::shared_ptr hands out
/// references to itself, as whichever of its types the caller needs. Derive from it virtually;
/// create the object with std::make_shared. Every operation throws std::bad_weak_ptr on an object
/// that no shared pointer owns. Any thread.
class MOXCORE_API EnableSharedAs : public std::enable_shared_from_this<EnableSharedAs> {
public:
    virtual ~EnableSharedAs();

    /// This object as a T, or null when it is none.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> SharedAs() {
        return std::dynamic_pointer_cast<T>(shared_from_this());
    }

    /// The same, without ownership.
    template <class T>
    [[nodiscard]] std::weak_ptr<T> WeakAs() {
        return SharedAs<T>();
    }

    /// `self`, which must be this very object or one of its bases, with shared ownership and
    /// without the search that SharedAs makes.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> Share(T* self) {
        return std::shared_ptr<T>(shared_from_this(), self);
    }

protected:
    EnableSharedAs() = default;
    /// A copy is owned separately.
    EnableSharedAs(EnableSharedAs const&) = default;
    EnableSharedAs& operator=(EnableSharedAs const&) = default;
};

}  // namespace moxcore::utility
