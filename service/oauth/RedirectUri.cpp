#include "service/oauth/RedirectUri.h"

#include <algorithm>
#include <optional>

#include "service/base/Text.h"

namespace quilloservice {

namespace {

constexpr std::string_view kIpv4 = "http://127.0.0.1";
constexpr std::string_view kIpv6 = "http://[::1]";
constexpr std::size_t kLongest = 1024;
constexpr std::int64_t kHighestPort = 65535;

/// The rest of `uri` after a loopback host; nothing if it has another scheme or host.
std::optional<std::string_view> AfterHost(std::string_view uri) {
    for (std::string_view origin : {kIpv4, kIpv6}) {
        if (uri.starts_with(origin)) return uri.substr(origin.size());
    }
    return std::nullopt;
}

/// Removes ":PORT" from the front of `rest`, if it starts with a colon; false if the port is
/// invalid.
bool TakePort(std::string_view& rest) {
    if (!rest.starts_with(':')) return true;
    std::string_view digits = rest.substr(1, rest.find('/') - 1);
    auto port = ParseNumber(digits);
    if (!port || *port < 1 || *port > kHighestPort || digits.starts_with('0')) return false;
    rest.remove_prefix(1 + digits.size());
    return true;
}

/// The characters of a path and query in RFC 3986. Browsers normalise others, such as backslashes,
/// each in its own way.
bool IsPathCharacter(char c) {
    constexpr std::string_view kMarks = "-._~!$&'()*+,;=:@/?%";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kMarks.find(c) != std::string_view::npos;
}

}  // namespace

bool IsLoopbackRedirect(std::string_view uri) {
    if (uri.size() > kLongest) return false;
    auto rest = AfterHost(uri);
    return rest && TakePort(*rest) && rest->starts_with('/') &&
           std::all_of(rest->begin(), rest->end(), IsPathCharacter);
}

std::string WithParameters(std::string uri,
                           std::vector<std::pair<std::string, std::string>> const& parameters) {
    char separator = uri.find('?') == std::string::npos ? '?' : '&';
    for (auto const& [name, value] : parameters) {
        uri += separator + name + '=' + PercentEncode(value);
        separator = '&';
    }
    return uri;
}

std::string FormActionSource(std::string_view uri) {
    // Content-Security-Policy has no syntax for IPv6 addresses.
    if (uri.starts_with(kIpv6)) return "http:";
    return std::string(uri.substr(0, uri.find('/', kIpv4.size())));
}

}  // namespace quilloservice
