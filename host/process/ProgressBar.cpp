#include "host/process/ProgressBar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "host/process/Columns.h"
#include "moxcore/config/Localizer.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

constexpr int kLongestBar = 40;
constexpr int kShortestBar = 8;

std::string Bar(double fraction, int length) {
    auto const done = static_cast<std::size_t>(std::lround(fraction * length));
    return " [" + std::string(done, '#') +
           std::string(static_cast<std::size_t>(length) - done, '.') + "]";
}

}  // namespace

std::string ProgressBar::Format(int width) const {
    std::array<char, 8> percent{};
    // Rounded down: 100 % is for what is complete.
    std::snprintf(percent.data(), percent.size(), " %3d %%", static_cast<int>(fraction * 100));
    std::string const leftText =
        left ? "  " + Text("$$$/Vistrel/quillo-host/Progress/Left={time} left",
                           {{"time", FormatTime(*left)}})
             : "";
    std::string const rateText = rate.empty() ? "" : "  " + rate;

    std::string line = label + percent.data();
    int room = width - CountColumns(line);
    auto const take = [&room](std::string const& part) {
        if (CountColumns(part) > room) return std::string();
        room -= CountColumns(part);
        return part;
    };
    std::string const takenLeft = take(leftText);
    std::string const takenRate = take(rateText);
    int const length = std::min(kLongestBar, room - 3);  // its brackets and the blank before it
    std::string const bar = length >= kShortestBar ? Bar(fraction, length) : "";
    return FirstColumns(label + bar + percent.data() + takenRate + takenLeft, width);
}

std::string FormatTime(std::chrono::seconds time) {
    auto const seconds = time.count();
    std::array<char, 32> text{};
    if (seconds >= 3600)
        std::snprintf(
            text.data(), text.size(), "%lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
            static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
    else
        std::snprintf(text.data(), text.size(), "%lld:%02lld", static_cast<long long>(seconds / 60),
                      static_cast<long long>(seconds % 60));
    return text.data();
}

std::string FormatBytes(double bytes) {
    if (bytes < 1000)
        return Text("$$$/Vistrel/quillo-host/Progress/Bytes={number} bytes",
                    {{"number", std::to_string(static_cast<long>(bytes))}});
    std::array const units{"kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    for (bytes /= 1000; bytes >= 999.95 && unit + 1 < units.size(); ++unit)
        bytes /= 1000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", bytes, units[unit]);
    return text.data();
}

std::string FormatSpeed(double factor) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1fx", factor);
    return text.data();
}

}  // namespace quillohost
