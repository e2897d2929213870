#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quilloservice::http {

/// Names and values in the order in which they came; a name may be there several times.
using Fields = std::vector<std::pair<std::string, std::string>>;

/// The head of a request, checked (see RequestParser).
struct Request {
    std::string method;
    std::string path;   ///< percent-decoded; "*" for the server as a whole
    Fields parameters;  ///< of the query, decoded
    std::string host;   ///< the name under which the client addresses the server; may be empty
    Fields headers;
    std::string remoteAddress;
    int minorVersion = 1;  ///< of HTTP/1

    /// How long the body is; nothing when the client announces no length ("chunked").
    std::optional<std::int64_t> bodyLength = 0;
    bool expectsContinue = false;
    bool closes = false;  ///< the client wants no further request on this connection

    /// The value of a header, its name in any case; nothing when it is absent. Throws ApiError 400
    /// when it is there twice.
    [[nodiscard]] std::optional<std::string_view> Header(std::string_view name) const;

    /// All values of a header that is a list, joined with commas; nothing when it is absent.
    [[nodiscard]] std::optional<std::string> ListHeader(std::string_view name) const;

    /// The first parameter of this name, empty when there is none.
    [[nodiscard]] std::string Parameter(std::string_view name) const;
    [[nodiscard]] bool HasParameter(std::string_view name) const;

    [[nodiscard]] bool HasBody() const { return bodyLength != 0; }
};

/// Whether the two are equal but for the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view one, std::string_view other);

/// The elements of a comma-separated list, without blanks around them and without empty ones.
std::vector<std::string_view> ListElements(std::string_view list);

}  // namespace quilloservice::http
