#pragma once

#include "host/process/MainLoop.h"
#include "host/process/ProgressDisplay.h"
#include "host/session/Options.h"
#include "quillohostkit/widgets/LocationDialog.h"

namespace quillohost::editor {

/// Signs in and has the user choose a folder in a dialog of its own. A Failure when there is no
/// display, when nobody can sign in, when the places cannot be had, and, of the kind Cancelled,
/// when the user does not choose. Main thread.
[[nodiscard]] quillohostkit::ChosenLocation ChooseLocation(Options const& options, MainLoop& loop,
                                                           ProgressDisplay& display);

}  // namespace quillohost::editor
