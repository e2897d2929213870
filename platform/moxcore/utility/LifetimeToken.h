#pragma once

#include <memory>
#include <utility>

namespace moxcore::utility {

/// Abandons calls that come after their object's end, or after Reset. A member of the object:
///
///     CallLater(token.Guard([this] { Finish(); }));
///
/// Such a call must come on the thread that destroys or resets the token: on another one the object
/// may die while it runs.
class LifetimeToken {
public:
    LifetimeToken() : life(std::make_shared<Life>()) {}
    LifetimeToken(LifetimeToken const&) = delete;
    LifetimeToken& operator=(LifetimeToken const&) = delete;

    /// Abandons all calls guarded until now.
    void Reset() { life = std::make_shared<Life>(); }

    /// `call`, which returns nothing, as long as the token lives and has not been reset.
    template <class Call>
    [[nodiscard]] auto Guard(Call call) const {
        return [watched = Watch(), call = std::move(call)](auto&&... arguments) {
            if (auto const held = watched.lock())
                call(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    /// Expires with the token. Any thread may ask whether it has.
    [[nodiscard]] std::weak_ptr<void const> Watch() const { return life; }

    /// A reference to `object` that expires with the token. `object` lives at least as long.
    template <class T>
    [[nodiscard]] std::weak_ptr<T> WeakTo(T& object) const {
        return std::shared_ptr<T>(life, &object);
    }

private:
    struct Life {};
    std::shared_ptr<Life> life;
};

}  // namespace moxcore::utility
