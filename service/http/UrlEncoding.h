#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// `text` with its percent-encodings decoded; nothing when one of them is malformed.
std::optional<std::string> PercentDecode(std::string_view text);

/// The fields of a query or of a form (application/x-www-form-urlencoded), decoded. A malformed
/// percent-encoding stands for itself, as browsers have it.
Fields ParseForm(std::string_view text);

}  // namespace quilloservice::http
