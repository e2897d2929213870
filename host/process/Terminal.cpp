#include "host/process/Terminal.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <regex>

#include "host/process/Failure.h"
#include "moxcore/debug/Trace.h"

namespace quillohost {
namespace {

constexpr char const* kReplacement = "\uFFFD";
constexpr char const* kWipe = "\r\x1b[K";

/// Whether a terminal could take it for more than a character of the text. Negative: no UTF-8.
bool IsUnsafe(UChar32 c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

/// `text` with what `replace` gives for each unsafe character in its place.
template <class Replace>
std::string WithSafeCharacters(std::string_view text, Replace replace) {
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

/// In one write, so that it stays together beside other writers.
bool Write(std::FILE* file, std::string const& text) {
    return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

}  // namespace

std::string OneLine(std::string_view text) {
    return WithSafeCharacters(text, [](UChar32) { return kReplacement; });
}

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        auto const line = text.substr(0, text.find('\n'));
        lines.emplace_back(line);
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    return lines;
}

std::vector<std::string> JsonLines(nlohmann::ordered_json const& json) {
    auto lines = LinesOf(json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace));
    for (auto& line : lines)
        line = WithSafeCharacters(line, [](UChar32 c) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
            return std::string(escape.data());
        });
    return lines;
}

void PrintLines(std::vector<std::string> const& lines) {
    std::string text;
    for (auto const& line : lines)
        text += OneLine(line) + '\n';
    if (!Write(stdout, text)) throw Failure(ExitCode::Other, "Cannot write to standard output.");
}

void TellLine(std::string_view line) {
    Write(stderr, OneLine(line) + '\n');
}

void ShowOverLine(std::string_view line) {
    Write(stderr, '\r' + OneLine(line) + "\x1b[K");
}

void WipeLine() {
    Write(stderr, kWipe);
}

void TellTraces() {
    moxcore::debug::SetTraceSink(
        [](int level, std::string const& category, std::string const& text) {
            auto const lines = LinesOf(category + ':' + std::to_string(level) + ' ' + text);
            for (auto const& line : lines)
                TellLine(line);
        });
}

void PrintTraces() {
    moxcore::debug::SetTraceSink(
        [](int, std::string const&, std::string const& text) { PrintLines(LinesOf(text)); });
}

bool IsPlainLink(std::string_view text) {
    static std::regex const link(
        R"(https?://([A-Za-z0-9._~-]+|\[[0-9A-Fa-f:.]+\])(:[0-9]{1,5})?([/?#][!#-;=?-Z_a-z~[\]]*)?)");
    constexpr std::size_t kLongest = 2048;  // longer than any that is made, and no burden to match
    return text.size() <= kLongest && std::regex_match(text.begin(), text.end(), link);
}

}  // namespace quillohost
