#include "host/editor/FrameClock.h"

#include <gmock/gmock.h>

namespace quillohost::editor {
namespace {

TEST(FrameClock, CountsThePicturesOfAMovie) {
    struct Row {
        std::optional<double> duration;
        std::optional<double> rate;
        int count;
        int frame;
        char const* timeCode;
    };
    Row const rows[] = {
        {5, 25, 125, 124, "00:00:04:24"},
        {3600, 30000.0 / 1001, 107892, 107891, "00:59:56:11"},  // an hour by the clock
        {7200, 24, 172800, 172799, "01:59:59:23"},
        {5, std::nullopt, 125, 30, "00:00:01:05"},  // sound alone
        {std::nullopt, 25, 1, 0, "00:00:00:00"},    // a file that does not tell how long it is
        {0.001, 25, 1, 0, "00:00:00:00"},           // shorter than a picture
        {400000, 90000, 1073741823, 999, "00:00:00:999"},  // nonsense in a file
        {10, 0.1, 1, 0, "00:00:00:00"},                    // a picture each ten seconds
    };
    for (auto const& row : rows) {
        FrameClock const clock(
            quillohostkit::Movie{.file = {}, .duration = row.duration, .frameRate = row.rate});
        EXPECT_EQ(clock.FrameCount(), row.count) << row.timeCode;
        EXPECT_EQ(clock.TimeCode(row.frame), row.timeCode);
    }
}

TEST(FrameClock, SeeksBetweenAPictureAndTheOneBefore) {
    FrameClock const clock(quillohostkit::Movie{.file = {}, .duration = 5, .frameRate = 25});
    EXPECT_EQ(clock.SeekTime(0), 0);
    for (int frame : {1, 2, 124}) {
        EXPECT_LT(clock.SeekTime(frame), frame / 25.0);
        EXPECT_GT(clock.SeekTime(frame), (frame - 1) / 25.0);
    }
}

}  // namespace
}  // namespace quillohost::editor
