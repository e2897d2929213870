#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quillosdk/Transport.h"

namespace quillosdk {

// Keeps secrets out of messages. Any thread.

/// Anything shorter can be guessed, and would be found in texts by accident.
inline constexpr std::size_t kShortestToken = 16;

/// Whether `text` can be an access or a refresh token: visible ASCII, long enough.
[[nodiscard]] bool IsToken(std::string_view text);

/// Puts "..." wherever `text` holds eight or more characters of `secret` in a row (all of a shorter
/// one): as they are, percent-encoded, or as JSON escapes them, also one in the other.
void Redact(std::string& text, std::string_view secret);

/// Takes `secret` out of the body of an answer that is no success: a service that repeats
/// what it was sent must not carry it into what is shown and traced. A body that is far too long
/// for an error is dropped.
void RedactRefusal(HttpResponse& answer, std::string_view secret);

}  // namespace quillosdk
