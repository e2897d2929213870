#pragma once

#include <optional>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// The result of a request's preconditions (RFC 9110, section 13.2).
enum class Precondition {
    Holds,        ///< process the request
    NotModified,  ///< 304: the client's copy is current
    Failed,       ///< 412: the resource has another entity tag
};

/// Evaluates If-Match and If-None-Match of a GET or HEAD. `tag` is the resource's strong entity
/// tag, in quotes.
Precondition CheckPreconditions(Request const& request, std::string_view tag);

/// The Range header, if it applies: to GET, and with If-Range only if that names the current `tag`.
std::optional<std::string_view> ApplicableRange(Request const& request, std::string_view tag);

}  // namespace quilloservice::http
