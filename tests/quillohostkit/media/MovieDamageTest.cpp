#include "quillohostkit/media/MovieDamage.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

namespace quillohostkit {
namespace {

constexpr char kCut[] = "stream 0, offset 0x2271a: partial file";
constexpr char kLost[] = "Error while decoding stream #0:0: Invalid data found";

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

TEST(MovieDamage, WhatIsMissingDecides) {
    struct {
        char const* what;
        char const* format;
        std::optional<double> rate;  // pictures in a second
        double read;                 // seconds of ten
        char const* complaint;
        int complaints;
        char const* damage;  // null: none
    } const cases[] = {
        {"whole", "mov", 25, 10, kCut, 0, nullptr},
        {"cut", "mov", 25, 5, kCut, 1, "only 0:05 of 0:10 could be read"},
        {"cut by little", "mov", 25, 9.8, kCut, 1, "only 0:09 of 0:10 could be read"},
        {"cut after the end of the last picture", "mov", 25, 9.85, kCut, 1, nullptr},
        {"cut by little, slow pictures", "mov", 1, 6.5, kCut, 1, nullptr},
        {"cut, sound alone", "mov", {}, 9.8, kCut, 1, "only 0:09 of 0:10 could be read"},
        {"cut, otherwise said", "matroska", 25, 5, "File ended prematurely", 1,
         "only 0:05 of 0:10 could be read"},
        {"a last picture that is held", "matroska", 25, 5, kCut, 0, nullptr},
        {"an estimated length", "mp3", {}, 5, kCut, 0, nullptr},
        {"cut without a word", "flac", {}, 8.9, kCut, 0, "only 0:08 of 0:10 could be read"},
        {"a rounded length", "flac", {}, 9.1, kCut, 0, nullptr},
        {"a rounded length, slow pictures", "flv", 1, 6.5, kCut, 0, nullptr},
        {"the start of a recording", "mov", 25, 10, kLost, 15, nullptr},
        {"a hole", "mov", 25, 10, kLost, 16, "parts of its picture or sound could not be read"},
        {"a hole in sound",
         "mov",
         {},
         10,
         kLost,
         19,
         "parts of its picture or sound could not be read"},
        {"other complaints", "mov", 25, 10, "Late SEI is not implemented", 99, nullptr},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.what);
        Movie movie{.file = "a", .duration = 10, .frameRate = one.rate};
        movie.format = one.format;
        ReadReport report;
        report.SetSeconds(one.read);
        for (int i = 0; i < one.complaints; ++i)
            report.AddComplaint(one.complaint);
        EXPECT_EQ(report.FindDamage(movie).value_or("none"), one.damage ? one.damage : "none");
    }
}

TEST(MovieDamage, AMovieThatDoesNotTellItsLengthIsNotDamaged) {
    ReadReport report;
    report.AddComplaint(kCut);
    EXPECT_EQ(report.FindDamage({.file = "a"}), std::nullopt);
}

}  // namespace
}  // namespace quillohostkit
