#pragma once

namespace quillohost::editor {

/// As the user chooses it; kept by number.
enum class ThemeChoice { System, Dark, Light };

/// Puts a theme in force: the library's views and the window's own widgets take the same colours.
/// Main thread.
void UseTheme(ThemeChoice choice);

}  // namespace quillohost::editor
