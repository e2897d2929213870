#include "host/media/MovieDamage.h"

#include <gmock/gmock.h>

#include <string>

namespace quillohost {
namespace {

TEST(MovieDamage, WhatFfmpegComplainsOfIsExplainedFirst) {
    struct {
        char const* line;
        char const* begins;
        char const* ends;
    } const cases[] = {
        {"[matroska,webm @ 0x55e5cf5eda00] File ended prematurely at pos. 9 (0x9)",
         "its file is cut short; copy it again",
         "(ffmpeg says: File ended prematurely at pos. 9 (0x9))."},
        {"file:/proc/self/fd/0: moov atom not found", "the recording was not finished",
         "(ffmpeg says: moov atom not found)."},
        {"[mp4 @ 0x1] file:/proc/self/fd/0: No space left on device", "the disk is full",
         "(ffmpeg says: No space left on device)."},
        {"[not an address] Out of luck", "it could not be read; copy it again",
         "(ffmpeg says: [not an address] Out of luck)."},
        {"", "it could not be read", "that made it."},
    };
    for (auto const& one : cases) {
        auto const text = ExplainComplaint(FfmpegComplaint(one.line));
        EXPECT_THAT(text, testing::StartsWith(one.begins));
        EXPECT_THAT(text, testing::EndsWith(one.ends));
    }
}

}  // namespace
}  // namespace quillohost
