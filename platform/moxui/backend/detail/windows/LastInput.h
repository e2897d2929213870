#pragma once

namespace moxui::backend {

/// Starts to watch with what the user works the program. Once is enough; calling it again does
/// nothing.
void WatchInput();

/// Whether the user's last doing was a key and not a press of a pointer, since WatchInput.
[[nodiscard]] bool LastInputWasKey();

}  // namespace moxui::backend
