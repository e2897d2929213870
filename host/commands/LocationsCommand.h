#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/session/Options.h"
#include "host/session/Session.h"

namespace quillohost {

/// The places of the user's tree, `options.depth` levels below the user, for standard output:
/// indented lines, or a JSON object for each with its children. A project stands for its root
/// folder, too. Signs in. A Failure when a list of places cannot be had. Main thread.
[[nodiscard]] std::vector<std::string> ListLocations(Session& session, Options const& options);

/// The same, handed to `print`, and again each time that the places have changed. Ends with a
/// Failure only: when it is interrupted, or a list of places cannot be had any more. Main thread.
[[noreturn]] void WatchLocations(Session& session, Options const& options,
                                 std::function<void(std::vector<std::string> const&)> const& print);

}  // namespace quillohost
