#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quilloservice {

/// Whether `uri` is a loopback redirect (RFC 8252, 7.3): "http://127.0.0.1:PORT/..." or
/// "http://[::1]:PORT/...", with any port, path and query and without a fragment. "localhost" is
/// not allowed, since a machine may resolve it to any address.
bool IsLoopbackRedirect(std::string_view uri);

/// Appends `parameters` to the query of `uri`, a loopback redirect.
std::string WithParameters(std::string uri,
                           std::vector<std::pair<std::string, std::string>> const& parameters);

/// The source for form-action in a Content-Security-Policy, so that a form may be answered with a
/// redirect to `uri`, a loopback redirect.
std::string FormActionSource(std::string_view uri);

}  // namespace quilloservice
