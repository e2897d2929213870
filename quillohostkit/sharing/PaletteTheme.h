#pragma once

#include <QPalette>

#include "moxui/skins/ThemeProvider.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// The theme that goes with such colours: the one of high contrast when every text stands on its
/// ground nearly as black on white does, else the dark one when its text is lighter than its
/// ground. Any thread.
[[nodiscard]] QUILLOHOSTKIT_API moxui::skins::ThemeKind ThemeOf(QPalette const& palette);

/// Has the library's views take the theme that goes with the host's colours. Main thread.
void FollowPalette(QPalette const& palette);

}  // namespace quillohostkit
