#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quilloservice {

/// `text` without blanks, tabs and carriage returns at its ends.
std::string_view Trim(std::string_view text);

/// Lower-case hexadecimal digits of `bytes`.
std::string ToHex(std::string_view bytes);

/// Decodes base64; nothing unless `text` is canonical and padded.
std::optional<std::string> FromBase64(std::string_view text);

/// Parses a non-negative decimal number; nothing for signs, blanks, other characters and overflow.
std::optional<std::int64_t> ParseNumber(std::string_view text);

/// Whether `text` is well-formed UTF-8 without NUL, as names must be.
bool IsShowableText(std::string_view text);

/// Whether `text` is showable and has no invisible characters: control characters, separators, and
/// marks that change the direction of text, which could make a name look like another one.
bool IsPrintableText(std::string_view text);

/// Escapes `text` for an HTML element or a double-quoted attribute.
std::string EscapeHtml(std::string_view text);

/// Percent-encodes everything but RFC 3986's unreserved characters.
std::string PercentEncode(std::string_view text);

}  // namespace quilloservice
