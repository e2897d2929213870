#pragma once

#include <functional>
#include <utility>

namespace moxui::ui {

/// Base of the messages that the toolkit passes to a handler: a question or a notice. The derived
/// class says which.
class ConstMessage {
public:
    virtual ~ConstMessage() = default;

protected:
    ConstMessage() = default;
    /// For derived classes alone, so that none is cut to its base.
    ConstMessage(ConstMessage const&) = default;
    ConstMessage& operator=(ConstMessage const&) = default;
};

/// A notice of something that has happened.
class Message : public ConstMessage {};

/// `handler` of the messages of type `TypedMessage`, as a handler of any message. The caller
/// installs it only where no other type arrives.
template <class TypedMessage>
[[nodiscard]] std::function<void(ConstMessage*)> BindNonMemberConstMessageFunction(
    std::function<void(TypedMessage*)> handler) {
    return [handler = std::move(handler)](ConstMessage* message) {
        handler(static_cast<TypedMessage*>(message));
    };
}

}  // namespace moxui::ui
