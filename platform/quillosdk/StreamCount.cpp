#include "quillosdk/StreamCount.h"

#include <algorithm>
#include <utility>

namespace quillosdk {
namespace {

using std::chrono::milliseconds;

/// A stream that has just begun fills buffers, or is yet to find out what the line takes.
constexpr milliseconds kSettle{500};
constexpr milliseconds kMeasure{500};
constexpr milliseconds kTryAgain{20'000};

constexpr double kWorthwhile = 1.25;

}  // namespace

void StreamCount::OnSent(Time now, std::uint64_t bytes) {
    if (!std::exchange(hasBegun, true) || now < since) return Enter(phase, now, bytes);
    auto const passed = now - since;
    if (phase == Phase::Settling && passed >= kSettle) return Enter(Phase::Measuring, now, bytes);
    if (phase == Phase::Measuring && passed >= kMeasure) return Judge(now, bytes);
    if (phase == Phase::Content && passed >= kTryAgain) {
        former = 0;
        Enter(Phase::Measuring, now, bytes);
    }
}

void StreamCount::Judge(Time now, std::uint64_t bytes) {
    std::chrono::duration<double> const passed = now - since;
    double const rate = static_cast<double>(bytes - bytesSince) / passed.count();
    if (former != 0 && rate < formerRate * kWorthwhile) {
        count = former;
        return Enter(Phase::Content, now, bytes);
    }
    if (count == most) return Enter(Phase::Content, now, bytes);
    former = std::exchange(count, std::min(2 * count, most));
    formerRate = rate;
    Enter(Phase::Settling, now, bytes);
}

void StreamCount::Enter(Phase newPhase, Time now, std::uint64_t bytes) {
    phase = newPhase;
    since = now;
    bytesSince = bytes;
}

}  // namespace quillosdk
