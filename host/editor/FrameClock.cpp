#include "host/editor/FrameClock.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>

namespace quillohost::editor {
namespace {

constexpr double kUsualRate = 25;

}  // namespace

FrameClock::FrameClock(quillohostkit::Movie const& movie)
    : rate(movie.frameRate.value_or(kUsualRate)),
      nominal(std::max(1, static_cast<int>(std::lround(std::min(rate, 1000.0))))),
      count(static_cast<int>(
          std::clamp(std::round(movie.duration.value_or(0) * rate), 1.0, INT_MAX / 2.0))) {}

double FrameClock::SeekTime(int frame) const {
    // Half a picture early: times in a file are rounded.
    return std::max(0.0, (frame - 0.5) / rate);
}

std::string FrameClock::TimeCode(int frame) const {
    int const seconds = frame / nominal;
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                  seconds % 60, frame % nominal);
    return text;
}

}  // namespace quillohost::editor
