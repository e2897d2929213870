#pragma once

#include <QWidget>
#include <vector>

namespace moxui::backend {

/// The widgets below `ancestor`, in its window, that can have the keyboard's focus by Tab, in
/// reading order.
[[nodiscard]] std::vector<QWidget*> FocusableBelow(QWidget const& ancestor);

/// Those among them at which Tab stops: the rows of a list are one stop, and a list is one only
/// where it scrolls and holds none.
[[nodiscard]] std::vector<QWidget*> TabStopsBelow(QWidget const& ancestor);

}  // namespace moxui::backend
