#pragma once

#include "host/Session.h"

namespace quillohost {

/// Switches the library's trace on, to standard output, signs in, waits for the tree down to the
/// projects and has the library trace all that it holds. A Failure as in Session. Main thread.
void Trace(Session& session);

}  // namespace quillohost
