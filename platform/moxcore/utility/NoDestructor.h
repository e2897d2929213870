#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace moxcore::utility {

/// A static object that is never destroyed. Other threads, later static destructors and the host
/// may still use this library's state while the process ends. For function-local statics:
///
///     static NoDestructor<Queue> queue;
///     return *queue;
///
/// The object lies within this one, so that a leak checker sees what it owns.
template <class T>
class NoDestructor {
public:
    static_assert(!std::is_trivially_destructible_v<T>, "A plain static does.");

    template <class... Arguments>
    explicit NoDestructor(Arguments&&... arguments) {
        ::new (static_cast<void*>(storage)) T(std::forward<Arguments>(arguments)...);
    }
    NoDestructor(NoDestructor const&) = delete;
    NoDestructor& operator=(NoDestructor const&) = delete;

    [[nodiscard]] T& operator*() { return *std::launder(reinterpret_cast<T*>(storage)); }
    [[nodiscard]] T const& operator*() const {
        return *std::launder(reinterpret_cast<T const*>(storage));
    }
    [[nodiscard]] T* operator->() { return &**this; }
    [[nodiscard]] T const* operator->() const { return &**this; }

private:
    alignas(T) std::byte storage[sizeof(T)];
};

}  // namespace moxcore::utility
