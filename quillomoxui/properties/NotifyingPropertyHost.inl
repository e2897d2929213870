#pragma once

#include <algorithm>
#include <utility>

#include "moxcore/threads/QueuedFunction.h"
#include "quillomoxui/properties/NotifyingPropertyHost.h"

namespace quillomoxui {

/// Ends the binding of `function` when it goes, if the property is still there.
template <class T, class Arg>
class NotifyingPropertyHost<T, Arg>::BindingHandleImpl final : public BindingHandle {
public:
    BindingHandleImpl(NotifyingPropertyHost* host,
                      std::weak_ptr<moxcore::utility::EnableSharedAs> owner,
                      std::shared_ptr<Callback> function)
        : host(host), owner(std::move(owner)), function(std::move(function)) {}

    ~BindingHandleImpl() override {
        if (auto const alive = owner.lock()) host->UnbindValueChanged(function);
    }

private:
    NotifyingPropertyHost* host;  // valid while `owner` is
    std::weak_ptr<moxcore::utility::EnableSharedAs> owner;
    std::shared_ptr<Callback> function;
};

template <class T, class Arg>
NotifyingPropertyHost<T, Arg>::~NotifyingPropertyHost() = default;

template <class T, class Arg>
T NotifyingPropertyHost<T, Arg>::GetValue() const {
    std::lock_guard lock(PropertyMutex(this));
    return value;
}

template <class T, class Arg>
void NotifyingPropertyHost<T, Arg>::SetInitialValue(T newValue) {
    // `newValue` then holds the old value, which thus dies after the lock.
    std::lock_guard lock(PropertyMutex(this));
    if (!(value == newValue)) std::swap(value, newValue);
}

template <class T, class Arg>
void NotifyingPropertyHost<T, Arg>::SetValue(Arg newValue) {
    ReplaceValue(newValue);
}

template <class T, class Arg>
void NotifyingPropertyHost<T, Arg>::ReplaceValue(T newValue) {
    // `newValue` then holds the old value, which thus dies after the lock.
    std::lock_guard lock(PropertyMutex(this));
    if (value == newValue) return;
    std::swap(value, newValue);
    // Posted under the lock, so that deliveries keep the order of the changes.
    if (bindings)
        DispatchBindings(value, bindings);
    else  // every change is one turn of the main thread's queue, watched or not
        moxcore::threads::QueueOnMainThread([] {});
}

template <class T, class Arg>
std::shared_ptr<BindingHandle> NotifyingPropertyHost<T, Arg>::BindValueChanged(
    Callback const& callback) {
    auto shared = std::make_shared<Callback>(callback);
    auto const only = std::make_shared<Bindings const>(1, shared);
    {
        std::lock_guard lock(PropertyMutex(this));
        DispatchBindings(value, only);
        if (bindings) {
            auto grown = std::make_shared<Bindings>();
            grown->reserve(bindings->size() + 1);
            *grown = *bindings;
            grown->push_back(shared);
            bindings = std::move(grown);
        } else {
            bindings = only;
        }
    }
    return std::make_shared<BindingHandleImpl>(this, shared_from_this(), std::move(shared));
}

template <class T, class Arg>
void NotifyingPropertyHost<T, Arg>::UnbindValueChanged(std::shared_ptr<Callback> const& callback) {
    std::shared_ptr<Bindings const>
        replaced;  // a callback that dies with it may run code: after the lock
    std::lock_guard lock(PropertyMutex(this));
    if (!bindings) return;
    auto const found = std::find(bindings->begin(), bindings->end(), callback);
    if (found == bindings->end()) return;
    replaced = std::move(bindings);
    if (replaced->size() == 1) return;
    auto rest = std::make_shared<Bindings>(replaced->begin(), found);
    rest->insert(rest->end(), found + 1, replaced->end());
    bindings = std::move(rest);
}

template <class T, class Arg>
void NotifyingPropertyHost<T, Arg>::DispatchBindings(T newValue,
                                                     std::shared_ptr<Bindings const> receivers) {
    moxcore::threads::QueueOnMainThread(
        [newValue = std::move(newValue), receivers = std::move(receivers)] {
            for (auto const& receiver : *receivers)
                (*receiver)(newValue);
        });
}

}  // namespace quillomoxui
