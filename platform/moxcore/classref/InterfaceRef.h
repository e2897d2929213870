#pragma once

#include <concepts>
#include <memory>
#include <utility>

#include "moxcore/config/Error.h"

namespace moxcore::classref {

/// A counted reference to an object behind the interface T, or to none. Using one that refers to
/// none breaks the contract (config::ContractViolation) instead of the process. Copies share the
/// object, which goes with the last of them. Any thread; one instance by one thread at a time.
template <class T>
class InterfaceRef {
public:
    InterfaceRef() = default;

    /// Refers to `object`, and to none when it is null.
    explicit InterfaceRef(std::shared_ptr<T> object) : object(std::move(object)) {}

    /// To the same object behind one of its bases.
    template <class Derived>
    requires std::convertible_to<Derived*, T*> InterfaceRef(InterfaceRef<Derived> const& other)
        : object(other.Share()) {}

    /// Whether it refers to an object.
    [[nodiscard]] explicit operator bool() const noexcept { return object != nullptr; }

    /// The object; a ContractViolation when there is none.
    [[nodiscard]] T& operator*() const { return Checked(); }
    [[nodiscard]] T* operator->() const { return &Checked(); }

    /// The object itself; null when there is none.
    [[nodiscard]] std::shared_ptr<T> const& Share() const noexcept { return object; }

    /// Whether both refer to the same object.
    friend bool operator==(InterfaceRef const&, InterfaceRef const&) = default;

private:
    [[nodiscard]] T& Checked() const {
        if (!object) throw config::ContractViolation("a reference to no object was used");
        return *object;
    }

    std::shared_ptr<T> object;
};

}  // namespace moxcore::classref
