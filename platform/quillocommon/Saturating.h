#pragma once

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include "moxcore/threads/Clock.h"

namespace quillocommon {

// Numbers that come from elsewhere: what lies beyond a type's end becomes that end. Any thread.

/// The number that `text` is, in decimal digits and nothing else.
[[nodiscard]] inline std::optional<std::uint64_t> ReadCount(std::string_view text) {
    std::uint64_t number = 0;
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, number);
    if (rest != end || error == std::errc::invalid_argument) return std::nullopt;
    return error == std::errc() ? number : std::numeric_limits<std::uint64_t>::max();
}

/// The time so long after 1970.
[[nodiscard]] inline moxcore::threads::TimePoint TimeAt(std::chrono::seconds sinceEpoch) {
    using moxcore::threads::TimePoint;
    using std::chrono::floor;
    using std::chrono::seconds;
    if (sinceEpoch >= floor<seconds>(TimePoint::max().time_since_epoch())) return TimePoint::max();
    if (sinceEpoch <= floor<seconds>(TimePoint::min().time_since_epoch())) return TimePoint::min();
    return TimePoint(sinceEpoch);
}

/// The time `wait`, which is not negative, after `time`.
[[nodiscard]] inline moxcore::threads::TimePoint TimeAfter(moxcore::threads::TimePoint time,
                                                           std::chrono::seconds wait) {
    using moxcore::threads::TimePoint;
    auto const room = TimePoint::max() - std::max(time, TimePoint());
    // In seconds: in the clock's ticks `wait` may be too large itself.
    return wait < std::chrono::floor<std::chrono::seconds>(room) ? time + wait : TimePoint::max();
}

}  // namespace quillocommon
