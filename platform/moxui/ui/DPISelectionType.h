#pragma once

namespace moxui::ui {

/// Whose scale a window's units follow. There is one answer here: that of the screen that the
/// window is on, whichever it is.
enum class DPISelectionType {
    OwnScreen = 2,
};

}  // namespace moxui::ui
