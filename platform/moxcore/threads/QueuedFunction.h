#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "moxcore/Export.h"

namespace moxcore::threads {

/// A function that is run at most once. Unlike std::function it can only be moved, and holds
/// closures of up to 56 bytes without an allocation: a property's change is one, and memory that
/// one thread allocates and another frees costs more than the rest of its way.
class QueuedFunction {
public:
    template <std::invocable F>
    requires(!std::same_as<std::remove_cvref_t<F>, QueuedFunction>)
        QueuedFunction(F&& function) {  // NOLINT(*-forwarding-reference-overload): excluded above
        using Closure = std::remove_cvref_t<F>;
        if constexpr (IsInPlace<Closure>()) {
            new (storage) Closure(std::forward<F>(function));
            operations = &InPlace<Closure>::kOperations;
        } else {
            using Pointer = std::unique_ptr<Closure>;
            auto closure = [owned = Pointer(new Closure(std::forward<F>(function)))] {
                (*owned)();
            };
            using Owner = decltype(closure);
            new (storage) Owner(std::move(closure));
            operations = &InPlace<Owner>::kOperations;
        }
    }

    QueuedFunction(QueuedFunction&& other) noexcept : operations(other.operations) {
        operations->move(other.storage, storage);
    }
    QueuedFunction& operator=(QueuedFunction&& other) noexcept {
        if (this == &other) return *this;
        operations->destroy(storage);
        operations = other.operations;
        operations->move(other.storage, storage);
        return *this;
    }
    ~QueuedFunction() { operations->destroy(storage); }
    QueuedFunction(QueuedFunction const&) = delete;
    QueuedFunction& operator=(QueuedFunction const&) = delete;

    void operator()() { operations->run(storage); }

private:
    static constexpr std::size_t kRoom = 56;

    struct Operations {
        void (*run)(void* closure);
        void (*move)(void* from, void* to) noexcept;  // what is left at `from` can be destroyed
        void (*destroy)(void* closure) noexcept;
    };

    template <class Closure>
    static constexpr bool IsInPlace() {
        return sizeof(Closure) <= kRoom && alignof(Closure) <= alignof(std::max_align_t) &&
               std::is_nothrow_move_constructible_v<Closure>;
    }

    template <class Closure>
    struct InPlace {
        static constexpr Operations kOperations{
            [](void* closure) { std::invoke(*static_cast<Closure*>(closure)); },
            [](void* from, void* to) noexcept {
                new (to) Closure(std::move(*static_cast<Closure*>(from)));
            },
            [](void* closure) noexcept { std::destroy_at(static_cast<Closure*>(closure)); }};
    };

    alignas(std::max_align_t) std::byte storage[kRoom];
    Operations const* operations;
};

/// As AsyncCallFromMainThread, for closures that shall not be allocated. Any thread.
MOXCORE_API void QueueOnMainThread(QueuedFunction function);

}  // namespace moxcore::threads
