#include "quillomoxui/model/sdk/RateLimit.h"

#include <charconv>
#include <limits>
#include <stdexcept>
#include <string>

namespace quillomoxui::model {
namespace {

constexpr int kShortestWindow = 1000;  // milliseconds; a shorter one would be none in whole seconds

/// As std::stoi, which takes five times as long for what is nothing but a number; what lies beyond
/// an int's end becomes that end.
int ToInt(std::string const& text) {
    int number = 0;
    auto const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, number);
    if (rest == end && error == std::errc()) return number;
    try {
        return std::stoi(text);
    } catch (std::out_of_range const&) {
        using Limits = std::numeric_limits<int>;
        bool const isNegative = text[text.find_first_not_of(" \t\n\v\f\r")] == '-';
        return isNegative ? Limits::min() : Limits::max();
    }
}

}  // namespace

std::optional<RateLimit> ReadRateLimit(quillosdk::Headers const& headers) {
    auto const limit = headers.find("X-RATELIMIT-LIMIT");
    auto const window = headers.find("X-RATELIMIT-WINDOW");
    if (limit == headers.end() || window == headers.end()) return std::nullopt;
    int const announcedLimit = ToInt(limit->second);
    int const announcedWindow = ToInt(window->second);
    if (announcedLimit <= 0 || announcedWindow < kShortestWindow) return std::nullopt;
    return RateLimit{announcedLimit, std::chrono::duration_cast<std::chrono::seconds>(
                                         std::chrono::milliseconds(announcedWindow))};
}

}  // namespace quillomoxui::model
