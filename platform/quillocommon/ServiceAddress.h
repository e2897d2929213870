#pragma once

#include <string>
#include <string_view>

#include "quillocommon/Export.h"

namespace quillocommon {

// Where the service is: the scheme, host and port, without a path ("http://127.0.0.1:8080"). Until
// it is set it is the value of QUILLO_SERVICE_URL, or empty; with an empty one every request fails.
// Any thread.

[[nodiscard]] QUILLOSERVICES_API std::string GetServiceAddress();

/// Takes `url` for every request made from now on, less any "/" at its end. False, and nothing
/// changes, when it is no http or https URL or holds a user, a path or a query.
QUILLOSERVICES_API bool SetServiceAddress(std::string const& url);

/// The address followed by `path`, in one piece; empty without an address.
[[nodiscard]] std::string UrlAtService(std::string_view path);

}  // namespace quillocommon
