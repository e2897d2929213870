#pragma once

#include <QWidget>
#include <vector>

#include "moxcore/geom/Rect.h"

namespace moxui::backend {

/// The area of each screen that windows may cover.
[[nodiscard]] std::vector<moxcore::geom::RectT<float>> AvailableScreens();

/// Keeps `window`, which has no parent widget, above `owner`'s window; null keeps it above none.
/// Called before `window` is shown.
void MakeTransient(QWidget& window, QWidget const* owner);

}  // namespace moxui::backend
