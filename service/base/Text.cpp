#include "service/base/Text.h"

#include <array>
#include <charconv>

namespace quilloservice {

namespace {

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The length of the UTF-8 sequence at the front of `text`, 0 if it is invalid.
std::size_t SequenceLength(std::string_view text) {
    auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char lead = byte(0);
    if (lead < 0x80) return 1;
    std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    unsigned char second = byte(1);
    bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    bool surrogate = lead == 0xED && second > 0x9F;
    bool beyondUnicode = lead == 0xF4 && second > 0x8F;
    return overlong || surrogate || beyondUnicode ? 0 : length;
}

}  // namespace

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    std::size_t const first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string ToHex(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (unsigned char byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    text.remove_suffix(padding);
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t pending = 0;
    int bits = 0;
    for (char c : text) {
        std::size_t digit = kBase64Digits.find(c);
        if (digit == std::string_view::npos) return std::nullopt;
        pending = pending << 6 | static_cast<std::uint32_t>(digit);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(pending >> bits);
            pending &= (1u << bits) - 1;
        }
    }
    if (pending != 0) return std::nullopt;
    return bytes;
}

std::optional<std::int64_t> ParseNumber(std::string_view text) {
    std::int64_t number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || text.front() == '-') {
        return std::nullopt;
    }
    return number;
}

bool IsShowableText(std::string_view text) {
    while (!text.empty()) {
        std::size_t length = SequenceLength(text);
        if (length == 0 || text.front() == '\0') return false;
        text.remove_prefix(length);
    }
    return true;
}

bool IsPrintableText(std::string_view text) {
    if (!IsShowableText(text)) return false;
    while (!text.empty()) {
        std::string_view character = text.substr(0, SequenceLength(text));
        bool control = character.size() == 1 ? character < " " || character == "\x7F"
                                             : character >= "\xC2\x80" && character <= "\xC2\x9F";
        bool invisible = (character >= "\u200B" && character <= "\u200F") ||
                         (character >= "\u2028" && character <= "\u202E") ||
                         (character >= "\u2060" && character <= "\u206F") ||
                         character == "\u061C" || character == "\uFEFF";
        if (control || invisible) return false;
        text.remove_prefix(character.size());
    }
    return true;
}

std::string EscapeHtml(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string PercentEncode(std::string_view text) {
    std::string encoded;
    for (char c : text) {
        bool unreserved = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                          (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~';
        encoded += unreserved ? std::string(1, c) : "%" + ToHex({&c, 1});
    }
    return encoded;
}

}  // namespace quilloservice
