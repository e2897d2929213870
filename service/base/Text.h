#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quilloservice {

/// Lower-case hexadecimal digits of `bytes`.
std::string ToHex(std::string_view bytes);

/// The bytes that `text` stands for, or nothing when it is not canonical padded base64.
std::optional<std::string> FromBase64(std::string_view text);

/// The non-negative decimal number that fills `text` wholly; nothing for signs, blanks and
/// overflow.
std::optional<std::int64_t> ParseNumber(std::string_view text);

/// Whether `text` is well-formed UTF-8 without NUL, and so may be kept as a name.
bool IsShowableText(std::string_view text);

/// Whether `text` is showable and without what is not printed: control characters, line and
/// paragraph separators, and what turns the direction of writing, so that a name looks like
/// another.
bool IsPrintableText(std::string_view text);

/// `text` for use inside an HTML element or a double-quoted attribute.
std::string EscapeHtml(std::string_view text);

/// `text` with everything but RFC 3986's unreserved characters percent-encoded.
std::string PercentEncode(std::string_view text);

}  // namespace quilloservice
