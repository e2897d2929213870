#include "host/process/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "moxcore/config/Localizer.h"
#include "moxcore/debug/Trace.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/text/PlainText.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

constexpr char const* kWipe = "\r\x1b[K";

/// In one write, so that it stays together beside other writers.
bool Write(std::FILE* file, std::string const& text) {
    return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

}  // namespace

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
        line = quillohostkit::ReplaceUnsafe(line, [](int c) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
            return std::string(escape.data());
        });
    return lines;
}

void PrintLines(std::vector<std::string> const& lines) {
    std::string text;
    for (auto const& line : lines)
        text += quillohostkit::OneLine(line) + '\n';
    if (!Write(stdout, text))
        throw quillohostkit::Failure(
            quillohostkit::FailureKind::Other,
            Text("$$$/Vistrel/quillo-host/NoOutput=Cannot write to standard output."));
}

void TellLine(std::string_view line) {
    Write(stderr, quillohostkit::OneLine(line) + '\n');
}

void ShowOverLine(std::string_view line) {
    Write(stderr, '\r' + quillohostkit::OneLine(line) + "\x1b[K");
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

}  // namespace quillohost
