#pragma once

#include "host/session/Session.h"

namespace quillohost {

/// Signs in, has the tree fetched down to the projects and prints what the library holds to
/// standard output.
void Trace(Session& session);

/// Switches the library's traces for developers on: they go to standard error.
void WantTrace();

/// Prints what the library holds at this moment to standard output.
void PrintTrace(quillomoxui::ShareForReviewViewModel& viewModel);

}  // namespace quillohost
