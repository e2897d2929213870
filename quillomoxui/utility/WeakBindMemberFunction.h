#pragma once

#include <functional>
#include <memory>
#include <type_traits>

#include "moxcore/utility/RefCountedObjectWithWeakPtr.h"

namespace quillomoxui::utility {

/// A function that calls `member` on `target` while that is alive, and does nothing once it is
/// gone. The target is kept alive for the length of a call, and only for that.
template <class Target, class Object, class Arg>
[[nodiscard]] std::function<void(Arg)> WeakBindMemberFunction(std::weak_ptr<Target> const& target,
                                                              void (Object::*member)(Arg)) {
    static_assert(
        std::is_base_of_v<Object, Target>,
        "The member function must belong to the target's class or to one of its bases: pass "
        "object->WeakAs<Class>() together with &Class::Member.");
    return [target, member](Arg argument) {
        if (auto const alive = target.lock())
            (static_cast<Object&>(*alive).*member)(static_cast<Arg&&>(argument));
    };
}

/// The same for a target that counts its references itself, as a view does.
template <class Target, class Object, class Arg>
[[nodiscard]] std::function<void(Arg)> WeakBindMemberFunction(Target* target,
                                                              void (Object::*member)(Arg)) {
    static_assert(std::is_base_of_v<Object, Target>,
                  "The member function must belong to the target's class or to one of its bases.");
    return [weak = moxcore::utility::RefCountedWeakPtr<Target>(target), member](Arg argument) {
        if (auto const alive = weak.Lock())
            (static_cast<Object&>(*alive).*member)(static_cast<Arg&&>(argument));
    };
}

}  // namespace quillomoxui::utility
