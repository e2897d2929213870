#pragma once

#include <string>

#include "quillohostkit/media/MovieProbe.h"

namespace quillohost::editor {

/// Counts the pictures of a movie from 0. A movie without pictures, or whose file does not tell how
/// many a second has, is counted as if it had 25.
class FrameClock {
public:
    explicit FrameClock(quillohostkit::Movie const& movie);

    /// At least one.
    [[nodiscard]] int FrameCount() const { return count; }
    /// Pictures in a second, in whole numbers.
    [[nodiscard]] int FramesPerSecond() const { return nominal; }

    /// A moment from which on `frame` is the first picture to come; in seconds.
    [[nodiscard]] double SeekTime(int frame) const;

    /// "hours:minutes:seconds:frames", without frames dropped from the count.
    [[nodiscard]] std::string TimeCode(int frame) const;

private:
    double rate;
    int nominal;
    int count;
};

}  // namespace quillohost::editor
