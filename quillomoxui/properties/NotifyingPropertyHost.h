#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "moxcore/utility/EnableSharedAs.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/utility/BindingHandle.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"

namespace quillomoxui {

/// The lock that guards the property at `host`: one of a few that all properties share, so that a
/// property costs no memory for it. Nothing but the property's own bookkeeping may run while it is
/// held.
[[nodiscard]] QUILLO_API std::mutex& PropertyMutex(void const* host) noexcept;

/// A value that others can watch. Every change is delivered to the callbacks bound at that moment,
/// in the order in which they were bound, later and on the main thread, each change with its own
/// value and in the order of the changes. `Arg` is how a value is passed: T for small values, T
/// const& for others.
///
/// The object that a host is part of must be owned by a std::shared_ptr before anybody binds. Any
/// thread; callbacks run on the main thread, and what one throws keeps the rest of that delivery
/// from running.
template <class T, class Arg>
class QUILLO_API NotifyingPropertyHost : public virtual moxcore::utility::EnableSharedAs {
public:
    /// Receives the value. Called on the main thread.
    using Callback = std::function<void(Arg)>;

    /// Stores `newValue` and notifies; nothing happens when it equals the value held.
    void SetValue(Arg newValue);

    /// Calls a copy of `callback` with the current value first, as if it had just changed, and then
    /// with every change, until the result is dropped. std::bad_weak_ptr when no shared pointer
    /// owns the object.
    [[nodiscard]] std::shared_ptr<BindingHandle> BindValueChanged(Callback const& callback);

    /// The same for a member function of `target`, which is not kept alive.
    template <class Target, class Object>
    [[nodiscard]] std::shared_ptr<BindingHandle> BindValueChanged(
        std::shared_ptr<Target> const& target, void (Object::*member)(Arg)) {
        return BindValueChanged(
            utility::WeakBindMemberFunction(std::weak_ptr<Target>(target), member));
    }

    /// Ends the binding of exactly this callback object; nothing happens when there is none.
    void UnbindValueChanged(std::shared_ptr<Callback> const& callback);

protected:
    NotifyingPropertyHost() = default;
    ~NotifyingPropertyHost() override;

    /// A copy of the value held.
    [[nodiscard]] T GetValue() const;

    /// As SetValue, for a value that nobody else needs: a list of a hundred thousand is not copied.
    void ReplaceValue(T newValue);

    /// Stores `newValue` without a notification.
    void SetInitialValue(T newValue);

private:
    friend class BindingCounter;  // of the tests, which look for bindings that are left behind
    class BindingHandleImpl;

    /// The bound callbacks, first bound first. Never changed once made: a binding that comes or
    /// goes puts a new list in place, so that a change, which is far more frequent, takes its
    /// snapshot with one reference.
    using Bindings = std::vector<std::shared_ptr<Callback>>;

    /// Queues one delivery of `newValue` to `receivers`.
    void DispatchBindings(T newValue, std::shared_ptr<Bindings const> receivers);

    T value{};  // guarded by PropertyMutex(this)
    std::shared_ptr<Bindings const>
        bindings;  // guarded by PropertyMutex(this); null when there are none
};

}  // namespace quillomoxui
