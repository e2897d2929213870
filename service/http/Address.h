#pragma once

#include <optional>
#include <string>

namespace quilloservice::http {

/// The IP address that `text` is, in one form for each: shortened, and an IPv4 address in IPv6's
/// form ("::ffff:192.0.2.1") as IPv4. Nothing for other text.
std::optional<std::string> ParseAddress(std::string const& text);

}  // namespace quilloservice::http
