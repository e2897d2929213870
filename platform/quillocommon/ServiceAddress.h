#pragma once

#include <string>
#include <string_view>

#include "quillocommon/Export.h"

namespace quillocommon {

// Where the service is: the scheme, host and port, without a path ("https://review.example"). Until
// it is set it is the value of QUILLO_SERVICE_URL, or empty; with an empty one every request fails.
// Tokens and movies go there, so it is https, or plain http to this machine: 127.0.0.0/8, [::1] or
// localhost. Any thread.

[[nodiscard]] QUILLOSERVICES_API std::string GetServiceAddress();

/// Takes `url` for every request made from now on, less any "/" at its end. False, and nothing
/// changes, when it is no http or https URL, holds a user, a path or a query, or is insecure.
QUILLOSERVICES_API bool SetServiceAddress(std::string const& url);

/// Whether `url` is an address that SetServiceAddress takes only after AllowInsecureHttp: plain
/// http to another machine, where everybody on the way can read and change what is sent.
[[nodiscard]] QUILLOSERVICES_API bool IsInsecureServiceAddress(std::string const& url);

/// Lets the address be an insecure one until the process ends, for a network that is trusted; that
/// of QUILLO_SERVICE_URL as well. The first that is taken is reported as a failure of the step
/// EncryptRequests. Call before any request is made.
QUILLOSERVICES_API void AllowInsecureHttp();

/// The address followed by `path`, in one piece; empty without an address.
[[nodiscard]] std::string UrlAtService(std::string_view path);

/// Why there is no address, for messages.
[[nodiscard]] std::string WhyNoServiceAddress();

}  // namespace quillocommon
