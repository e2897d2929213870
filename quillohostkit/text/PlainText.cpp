#include "quillohostkit/text/PlainText.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <regex>

namespace quillohostkit {
namespace {

constexpr char const* kReplacement = "\uFFFD";

/// Whether a terminal could take it for more than a character of the text. Negative: no UTF-8.
bool IsUnsafe(UChar32 c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

}  // namespace

std::string ReplaceUnsafe(std::string_view text, std::function<std::string(int)> const& replace) {
    std::string safe;
    safe.reserve(text.size());
    auto const length = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < length;) {
        auto const begin = at;
        UChar32 c = 0;
        U8_NEXT(text.data(), at, length, c);
        if (IsUnsafe(c))
            safe += replace(c);
        else
            safe +=
                text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
    }
    return safe;
}

std::string OneLine(std::string_view text) {
    return ReplaceUnsafe(text, [](int) { return kReplacement; });
}

bool IsPlainLink(std::string_view text) {
    static std::regex const link(
        R"(https?://([A-Za-z0-9._~-]+|\[[0-9A-Fa-f:.]+\])(:[0-9]{1,5})?([/?#][!#-;=?-Z_a-z~[\]]*)?)");
    constexpr std::size_t kLongest = 2048;  // longer than any that is made, and no burden to match
    return text.size() <= kLongest && std::regex_match(text.begin(), text.end(), link);
}

}  // namespace quillohostkit
