#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quilloservice {

/// Whether `uri` leads to a program that listens on the browser's own machine, as RFC 8252 has it:
/// "http://127.0.0.1:PORT/..." or "http://[::1]:PORT/...", any port, any path and query, no
/// fragment. "localhost" is no such host: what it stands for is up to the machine.
bool IsLoopbackRedirect(std::string_view uri);

/// `uri`, which is a loopback redirect, with `parameters` behind the query that it may have.
std::string WithParameters(std::string uri,
                           std::vector<std::pair<std::string, std::string>> const& parameters);

/// What a Content-Security-Policy has to name in form-action for a form to be answered with a
/// redirect to `uri`, a loopback redirect.
std::string FormActionSource(std::string_view uri);

}  // namespace quilloservice
