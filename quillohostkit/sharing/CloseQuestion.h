#pragma once

#include <QWidget>

#include "quillohostkit/ShareState.h"

namespace quillohostkit {

/// Whether the program ends when `window` is closed.
[[nodiscard]] bool EndsWith(QWidget const& window);

/// Asks the user, over `window`, whether to stop the share under way. Waits for the answer.
[[nodiscard]] bool MayStop(QWidget& window, ShareState const& state);

}  // namespace quillohostkit
