#pragma once

#include <optional>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// What the conditions of a request for something come to (RFC 9110, section 13.2).
enum class Precondition {
    Holds,        ///< answer it
    NotModified,  ///< 304: the client has it already
    Failed,       ///< 412: it is not what the client wants
};

/// `tag` is the strong entity tag, in quotes, of what is asked for with GET or HEAD.
Precondition CheckPreconditions(Request const& request, std::string_view tag);

/// The Range header, where one applies: of a GET, and, under If-Range, only while the thing is the
/// one that the client has a part of.
std::optional<std::string_view> ApplicableRange(Request const& request, std::string_view tag);

}  // namespace quilloservice::http
