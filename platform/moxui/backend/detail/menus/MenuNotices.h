#pragma once

#include <functional>
#include <utility>

#include "moxui/backend/detail/widgets/CallFromQt.h"

namespace moxui::backend {

/// Tells somebody before a menu opens and after it has closed, once each.
class MenuNotices {
public:
    std::function<void()> before;
    std::function<void()> after;

    [[nodiscard]] bool IsOpen() const { return isOpen; }

    void WillOpen() {
        isOpen = true;
        Call(before);
    }
    void HasClosed() {
        if (std::exchange(isOpen, false)) Call(after);
    }

private:
    /// A function may replace itself.
    static void Call(std::function<void()> const& function) {
        if (auto const copy = function) CallFromQt(copy);
    }

    bool isOpen = false;
};

}  // namespace moxui::backend
