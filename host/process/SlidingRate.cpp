#include "host/process/SlidingRate.h"

namespace quillohost {
namespace {

constexpr std::chrono::seconds kWindow{10};
constexpr std::chrono::seconds kBeforeEstimate{1};
constexpr std::chrono::milliseconds kBetweenSamples{100};

}  // namespace

void SlidingRate::Add(Time now, double fraction) {
    // The last sample moves along until it is far enough from the one before.
    bool const isClose =
        samples.size() > 1 && now - samples[samples.size() - 2].time < kBetweenSamples;
    if (isClose) samples.pop_back();
    samples.push_back({now, fraction});
    while (samples.size() > 2 && now - samples[1].time >= kWindow)
        samples.pop_front();
}

std::optional<double> SlidingRate::PerSecond() const {
    if (samples.empty()) return std::nullopt;
    auto const passed = samples.back().time - samples.front().time;
    auto const done = samples.back().fraction - samples.front().fraction;
    if (passed < kBeforeEstimate || done <= 0) return std::nullopt;
    return done / std::chrono::duration<double>(passed).count();
}

}  // namespace quillohost
