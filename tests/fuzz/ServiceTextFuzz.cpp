// The service's codings of text.

#include <array>
#include <string>

#include "service/base/Text.h"
#include "tests/fuzz/Fuzz.h"

namespace {

std::string ToBase64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        auto const three = bytes.substr(at, 3);
        unsigned group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < three.size() ? static_cast<unsigned char>(three[i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= three.size() ? kDigits[group >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

std::string FromPercent(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            bytes += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

std::string FromHtml(std::string const& text) {
    constexpr std::array<std::array<std::string_view, 2>, 5> kEntities{
        {{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}}};
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t taken = 1;
        std::string_view stands = std::string_view(text).substr(at, 1);
        for (auto const& [entity, character] : kEntities) {
            if (!std::string_view(text).substr(at).starts_with(entity)) continue;
            taken = entity.size();
            stands = character;
        }
        plain += stands;
        at += taken;
    }
    return plain;
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const text = fuzz::AsText(data, size);

    FUZZ_REQUIRE(quilloservice::FromBase64(ToBase64(text)) == text);
    if (auto const bytes = quilloservice::FromBase64(text))
        FUZZ_REQUIRE(ToBase64(*bytes) == text);  // one form for each value

    auto const encoded = quilloservice::PercentEncode(text);
    FUZZ_REQUIRE(encoded.find_first_of("&=+#?/ \"'<>\r\n") == std::string::npos);
    FUZZ_REQUIRE(FromPercent(encoded) == text);

    auto const escaped = quilloservice::EscapeHtml(text);
    FUZZ_REQUIRE(escaped.find_first_of("<>\"'") == std::string::npos);
    FUZZ_REQUIRE(FromHtml(escaped) == text);

    FUZZ_REQUIRE(quilloservice::IsShowableText(text) ==
                 (fuzz::IsUtf8(text) && text.find('\0') == std::string_view::npos));
    if (auto const number = quilloservice::ParseNumber(text)) {
        FUZZ_REQUIRE(*number >= 0);
        auto const digits = text.substr(std::min(text.find_first_not_of('0'), text.size() - 1));
        FUZZ_REQUIRE(std::to_string(*number) == digits);
    }
    return 0;
}
