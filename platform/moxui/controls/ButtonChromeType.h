#pragma once

namespace moxui::controls {

/// How much of a button is drawn around its text or picture. The numbers are the toolkit's.
enum class ButtonChromeType {
    Push = 0,    // a ground and a border, always
    Quiet = 10,  // no border, and a ground under the pointer and while it is pressed
};

/// When a part of a button is drawn.
enum class DisplayWhen {
    Never,
    Hovered,  // under the pointer and while it is pressed
    Always,
};

}  // namespace moxui::controls
