#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quillocommon/Export.h"

namespace quillocommon {

// Parsing and checking URLs. Any thread.

/// The parts of an http or https URL.
struct Url {
    std::string origin;  ///< "https://host:8443": in lower case, without the scheme's own port
    std::string host;    ///< in lower case; an IPv6 address in brackets
    std::string target;  ///< the path, "/" at least, and the query
    bool hasUser = false;
    bool hasQuery = false;
    bool hasFragment = false;

    /// Whether its host is this machine, so that no proxy can stand between.
    [[nodiscard]] bool IsLoopback() const;
};

/// The parts of `text`, which may be relative to `base` when there is one. None when it is no http
/// or https URL.
[[nodiscard]] std::optional<Url> ParseUrl(std::string const& text, std::string const& base = {});

/// The parameters of a query ("a=1&b=%202", as forms send it), decoded, in their order.
[[nodiscard]] std::vector<std::pair<std::string, std::string>> ParseQuery(std::string const& query);

/// `text` with everything but letters, digits and "-._~" percent-encoded.
[[nodiscard]] std::string PercentEncode(std::string const& text);

}  // namespace quillocommon
