#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quilloservice::http {

/// Names and values in their original order; names may repeat.
using Fields = std::vector<std::pair<std::string, std::string>>;

/// The validated head of a request (see RequestParser).
struct Request {
    std::string method;
    std::string path;   ///< percent-decoded; "*" for the whole server
    Fields parameters;  ///< of the query, decoded
    std::string host;   ///< the server's name and port as used by the client; may be empty
    Fields headers;
    std::string remoteAddress;
    int minorVersion = 1;  ///< of HTTP/1

    /// The body's length; nothing for a chunked body.
    std::optional<std::int64_t> bodyLength = 0;
    bool expectsContinue = false;
    bool closes = false;  ///< the client closes the connection after this request

    /// The value of a header, whose name is case-insensitive; nothing if it is absent. Throws
    /// ApiError 400 if it is repeated.
    [[nodiscard]] std::optional<std::string_view> Header(std::string_view name) const;

    /// All values of a list header, joined with commas; nothing if it is absent.
    [[nodiscard]] std::optional<std::string> ListHeader(std::string_view name) const;

    /// The first query parameter with this name; empty if there is none.
    [[nodiscard]] std::string Parameter(std::string_view name) const;
    [[nodiscard]] bool HasParameter(std::string_view name) const;

    [[nodiscard]] bool HasBody() const { return bodyLength != 0; }
};

/// Compares without regard to the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view one, std::string_view other);

/// The non-empty elements of a comma-separated list, trimmed. Commas in quotes do not separate.
std::vector<std::string_view> ListElements(std::string_view list);

}  // namespace quilloservice::http
