#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quillohost {

/// How far a piece of work is, in words and as a bar. A plain value.
struct ProgressBar {
    std::string label;
    double fraction = 0;  ///< 0 to 1
    std::string rate;     ///< "12.3 MB/s"; may be empty
    std::optional<std::chrono::seconds> left;

    /// One line of at most `width` columns. What does not fit is left out, the bar first, then the
    /// rate, then the time left.
    [[nodiscard]] std::string Format(int width) const;
};

/// "0:07", "12:34", "1:02:03".
[[nodiscard]] std::string FormatTime(std::chrono::seconds time);

/// "812 bytes", "1.4 MB".
[[nodiscard]] std::string FormatBytes(double bytes);

/// "2.1x": so many times as fast as the movie plays.
[[nodiscard]] std::string FormatSpeed(double factor);

}  // namespace quillohost
