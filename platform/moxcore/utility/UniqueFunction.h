#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace moxcore::utility {

template <class Signature>
class UniqueFunction;

/// A function that has one owner: unlike std::function's, what it holds need not be copyable and is
/// never copied, and as long as it is no larger than eight pointers it is kept in place. An empty
/// one may only be assigned to, destroyed and tested. One instance by one thread at a time.
template <class Result, class... Args>
class UniqueFunction<Result(Args...)> {
public:
    UniqueFunction() = default;

    template <class F>
    requires(!std::same_as<std::remove_cvref_t<F>, UniqueFunction> &&
             std::is_invocable_r_v<Result, F&, Args...>)
        UniqueFunction(F function) {  // NOLINT(google-explicit-constructor)
        if constexpr (sizeof(F) <= sizeof(room) && alignof(F) <= alignof(std::max_align_t) &&
                      std::is_nothrow_move_constructible_v<F>) {
            new (room) F(std::move(function));
            operations = &kOperations<F>;
        } else {
            auto boxed = [box = std::make_unique<F>(std::move(function))](Args... args) -> Result {
                return (*box)(std::forward<Args>(args)...);
            };
            new (room) decltype(boxed)(std::move(boxed));
            operations = &kOperations<decltype(boxed)>;
        }
    }

    UniqueFunction(UniqueFunction&& other) noexcept { TakeOver(other); }
    UniqueFunction& operator=(UniqueFunction&& other) noexcept {
        if (this == &other) return *this;
        Destroy();
        TakeOver(other);
        return *this;
    }
    ~UniqueFunction() { Destroy(); }

    [[nodiscard]] explicit operator bool() const noexcept { return operations != nullptr; }

    Result operator()(Args... args) { return operations->call(room, std::forward<Args>(args)...); }

private:
    struct Operations {
        Result (*call)(void* function, Args... args);
        void (*move)(void* from, void* to) noexcept;
        void (*destroy)(void* function) noexcept;
    };

    template <class F>
    static constexpr Operations kOperations{
        [](void* function, Args... args) -> Result {
            return (*static_cast<F*>(function))(std::forward<Args>(args)...);
        },
        [](void* from, void* to) noexcept {
            new (to) F(std::move(*static_cast<F*>(from)));
            static_cast<F*>(from)->~F();
        },
        [](void* function) noexcept { static_cast<F*>(function)->~F(); }};

    void TakeOver(UniqueFunction& other) noexcept {
        operations = std::exchange(other.operations, nullptr);
        if (operations) operations->move(other.room, room);
    }

    void Destroy() noexcept {
        if (auto const* const ended = std::exchange(operations, nullptr)) ended->destroy(room);
    }

    Operations const* operations = nullptr;  // null: empty
    alignas(std::max_align_t) std::byte room[8 * sizeof(void*)];
};

}  // namespace moxcore::utility
