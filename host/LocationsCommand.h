#pragma once

#include <string>

#include "host/Options.h"
#include "host/Session.h"

namespace quillohost {

/// The places of the user's tree, `options.depth` levels below the user, for standard output:
/// indented lines, or a JSON object for each with its children. A project stands for its root
/// folder, too. Signs in. A Failure when a list of places cannot be had. Main thread.
[[nodiscard]] std::string ListLocations(Session& session, Options const& options);

}  // namespace quillohost
