#pragma once

namespace moxui::ui {

/// A question that the toolkit puts to a handler; what is asked is told by the derived class.
class ConstMessage {
public:
    virtual ~ConstMessage() = default;

protected:
    ConstMessage() = default;
    ConstMessage(ConstMessage const&) = default;
    ConstMessage& operator=(ConstMessage const&) = default;
};

}  // namespace moxui::ui
