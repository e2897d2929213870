#pragma once

#include "host/session/Options.h"

namespace quillohost::editor {

/// Shows the editor's window until it is closed; the process's exit status. A Failure when there is
/// no display, or the host's own files cannot be used.
[[nodiscard]] int RunEditor(Options const& options);

}  // namespace quillohost::editor
