#pragma once

#include <QPalette>

namespace quillohostkit {

/// Has the library's views take the theme that goes with the host's colours: the dark one when its
/// text is lighter than its ground. Main thread.
void FollowPalette(QPalette const& palette);

}  // namespace quillohostkit
