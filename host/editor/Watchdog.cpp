#include "host/editor/Watchdog.h"

#include <algorithm>
#include <ctime>
#include <nlohmann/json.hpp>

namespace quillohost::editor {
namespace {

double Milliseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

}  // namespace

Watchdog::Times Watchdog::Now() {
    timespec worked{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &worked);
    return {std::chrono::steady_clock::now().time_since_epoch(),
            std::chrono::seconds(worked.tv_sec) + std::chrono::nanoseconds(worked.tv_nsec)};
}

void Watchdog::Begin(char const* receiver, int eventType, int loop, Times now) {
    bool const isInAnother = !handled.empty() && handled.back().loop == loop;
    if (!isInAnother)
        for (auto& outer : handled)
            outer.isMeasured = false;
    handled.push_back({receiver, eventType, loop, now, !isInAnother});
}

void Watchdog::End(Times now) {
    auto const event = handled.back();
    handled.pop_back();
    if (!event.isMeasured) return;
    auto& same = seen[{event.receiver, event.type}];
    ++same.count;
    Times const took{now.wall - event.begun.wall, now.worked - event.begun.worked};
    if (took.wall > kFrame) ++same.tooLong;
    if (took.wall > same.longest.wall) same.longest = took;
}

std::string Watchdog::Report() const {
    std::vector<std::pair<std::pair<std::string_view, int>, Seen>> sorted(seen.begin(), seen.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](auto const& a, auto const& b) {
        return a.second.longest.wall > b.second.longest.wall;
    });
    auto report = nlohmann::ordered_json::array();
    for (auto const& [event, measured] : sorted)
        report.push_back({{"receiver", event.first},
                          {"type", event.second},
                          {"count", measured.count},
                          {"too_long", measured.tooLong},
                          {"longest_ms", Milliseconds(measured.longest.wall)},
                          {"worked_ms", Milliseconds(measured.longest.worked)}});
    return report.dump(1) + '\n';
}

}  // namespace quillohost::editor
