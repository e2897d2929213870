#pragma once

#include <functional>
#include <utility>

namespace moxui::ui {

/// What the toolkit puts to a handler: a question or a notice; which one is told by the derived
/// class.
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

/// `handler` of the messages of type `TypedMessage`, as a handler of any message. Whoever installs
/// it sees to it that no other type arrives.
template <class TypedMessage>
[[nodiscard]] std::function<void(ConstMessage*)> BindNonMemberConstMessageFunction(
    std::function<void(TypedMessage*)> handler) {
    return [handler = std::move(handler)](ConstMessage* message) {
        handler(static_cast<TypedMessage*>(message));
    };
}

}  // namespace moxui::ui
