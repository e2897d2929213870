#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// Decodes percent-encodings; nothing if one is malformed.
std::optional<std::string> PercentDecode(std::string_view text);

/// Parses a query or a form (application/x-www-form-urlencoded). Malformed percent-encodings are
/// kept as they are, as browsers do.
Fields ParseForm(std::string_view text);

}  // namespace quilloservice::http
