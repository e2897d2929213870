#pragma once

namespace moxui::controls {

/// What a button that opens a menu shows around itself.
enum class ButtonChromeType {
    Framed = 0,  // always a ground and a border
    Flat = 10,   // a ground only under the pointer, while pressed and while its menu is open
};

}  // namespace moxui::controls
