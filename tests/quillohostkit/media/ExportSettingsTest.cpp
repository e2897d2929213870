#include "quillohostkit/media/ExportSettings.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/quillohostkit/media/ExportTest.h"

namespace quillohostkit {
namespace {

/// A movie, and what its export has to be.
struct Case {
    char const* what;
    char const* file;
    std::string source;  ///< of the picture, in lavfi's words; empty: none
    Words encoding;
    int pictures = 25;
    int width = 96;
    int height = 54;
    char const* matrix = "smpte170m";
    testmovies::Colour colour{-1, 0, 0};  ///< -1: any
    int channels = 0;
    double duration = 1;  ///< in seconds
};

constexpr testmovies::Colour kRed{200, 40, 30};
std::string const kRedSource = "color=c=0xC8281E:s=96x54:d=1,format=gbrp";
std::string const kRedHDSource = "color=c=0xC8281E:s=1280x720:d=0.2,format=gbrp";
std::string const kPatternSource = "testsrc2=s=96x54:d=1";

/// White of 203 cd/m2, as a screen of BT.709 shows it; and half of it over black.
constexpr testmovies::Colour kShownWhite{193, 193, 193};
constexpr testmovies::Colour kHalfWhite{97, 97, 97};

// White in high dynamic range, by the transfer curve `curve`.
std::string Hdr(std::string const& curve) {
    return "color=c=white:s=96x54:d=1,zscale=tin=bt709:min=bt709:pin=bt709:t=" + curve +
           ":m=bt2020nc:p=bt2020:npl=203,format=yuv420p10le";
}
std::string HalfTransparent(std::string const& curve) {
    return "color=c=white@0.5:s=96x54:d=1,format=gbrap,split[c][a];[a]alphaextract[k];"
           "[c]format=gbrp,zscale=tin=bt709:min=gbr:pin=bt709:t=" +
           curve + ":m=bt2020nc:p=bt2020:npl=203:r=limited,format=yuv444p[d];[d][k]alphamerge";
}
Words TaggedHdr(std::string const& encoder, std::string const& curve) {
    return {"-c:v",   encoder,       "-color_trc", curve, "-color_primaries",
            "bt2020", "-colorspace", "bt2020nc"};
}

std::string InMatrix(char const* matrix, char const* format) {
    return std::string("scale=out_color_matrix=") + matrix + ",format=" + format;
}

std::vector<Case> Cases() {
    return {
        {"RGB, SD", "in.mkv", kRedSource, {"-c:v", "libx264rgb"}, 25, 96, 54, "smpte170m", kRed},
        {"RGB, HD",
         "in.mkv",
         kRedHDSource,
         {"-c:v", "libx264rgb"},
         5,
         1280,
         720,
         "bt709",
         kRed,
         0,
         0.2},
        {"HD without a tag",
         "in.mp4",
         kRedHDSource,
         {"-vf", InMatrix("bt709", "yuv420p")},
         5,
         1280,
         720,
         "bt709",
         kRed,
         0,
         0.2},
        {"HD, tagged as SD's",
         "in.mp4",
         kRedHDSource,
         {"-vf", InMatrix("bt601", "yuv420p"), "-colorspace", "smpte170m"},
         5,
         1280,
         720,
         "bt709",
         kRed,
         0,
         0.2},
        {"MJPEG, full range",
         "in.mov",
         kRedSource,
         {"-c:v", "mjpeg", "-pix_fmt", "yuvj422p"},
         25,
         96,
         54,
         "smpte170m",
         kRed},
        {"HEVC, 10 bit",
         "in.mp4",
         kRedSource,
         {"-c:v", "libx265", "-x265-params", "log-level=none", "-pix_fmt", "yuv420p10le"},
         25,
         96,
         54,
         "smpte170m",
         kRed},
        {"ProRes with timecode",
         "in.mov",
         kRedSource,
         {"-c:v", "prores_ks", "-timecode", "01:00:00:00"},
         25,
         96,
         54,
         "smpte170m",
         kRed},
        {"VP9",
         "in.webm",
         kRedSource,
         {"-c:v", "libvpx-vp9", "-cpu-used", "8"},
         25,
         96,
         54,
         "smpte170m",
         kRed},
        {"AV1",
         "in.mkv",
         kRedSource,
         {"-c:v", "libaom-av1", "-cpu-used", "8"},
         25,
         96,
         54,
         "smpte170m",
         kRed},
        {"4:4:4, odd size",
         "in.mp4",
         "color=c=0xC8281E:s=98x56:d=1,format=gbrp,crop=97:55:exact=1",
         {"-pix_fmt", "yuv444p"},
         25,
         98,
         56,
         "smpte170m",
         kRed},
        {"half transparent, over black",
         "in.mov",
         "color=c=0xC8281E@0.5:s=96x54:d=1,format=rgba",
         {"-c:v", "qtrle", "-pix_fmt", "argb"},
         25,
         96,
         54,
         "smpte170m",
         {100, 20, 15}},
        {"PQ", "in.mkv", Hdr("smpte2084"), TaggedHdr("libx265", "smpte2084"), 25, 96, 54,
         "smpte170m", kShownWhite},
        {"HLG", "in.mkv", Hdr("arib-std-b67"), TaggedHdr("libx265", "arib-std-b67"), 25, 96, 54,
         "smpte170m", kShownWhite},
        {"PQ, half transparent, over black", "in.mkv", HalfTransparent("smpte2084"),
         TaggedHdr("ffv1", "smpte2084"), 25, 96, 54, "smpte170m", kHalfWhite},
        {"HLG, half transparent, over black", "in.mkv", HalfTransparent("arib-std-b67"),
         TaggedHdr("ffv1", "arib-std-b67"), 25, 96, 54, "smpte170m", kHalfWhite},
        {"HD with alpha, without a tag",
         "in.mov",
         "color=c=0xC8281E:s=1280x720:d=0.2,format=gbrap",
         {"-c:v", "prores_ks", "-vf", InMatrix("bt709", "yuva444p10le")},
         5,
         1280,
         720,
         "bt709",
         kRed,
         0,
         0.2},
        {"one picture",
         "in.mp4",
         kPatternSource,
         {"-frames:v", "1"},
         1,
         96,
         54,
         "smpte170m",
         {-1, 0, 0},
         0,
         0.04},
        {"5.1",
         "in.mkv",
         kPatternSource,
         {"-f", "lavfi", "-i", "sine=d=1", "-af", "pan=5.1|c0=c0|c1=c0|c2=c0|c3=c0|c4=c0|c5=c0",
          "-c:a", "ac3"},
         25,
         96,
         54,
         "smpte170m",
         {-1, 0, 0},
         2},
        {"mono",
         "in.mkv",
         kPatternSource,
         {"-f", "lavfi", "-i", "sine=d=1", "-ac", "1"},
         25,
         96,
         54,
         "smpte170m",
         {-1, 0, 0},
         1},
        {"the second sound is the default",
         "in.mkv",
         kPatternSource,
         {"-f", "lavfi", "-i", "sine=d=1", "-f", "lavfi", "-i", "anullsrc=cl=stereo:d=1", "-map",
          "0", "-map", "1", "-map", "2", "-disposition:a:0", "0", "-disposition:a:1", "default"},
         25,
         96,
         54,
         "smpte170m",
         {-1, 0, 0},
         2},
    };
}

using ExportSettingsTest = ExportTest;

TEST_F(ExportSettingsTest, EveryKindOfMovieComesOutAsItIsShown) {
    for (auto const& one : Cases()) {
        SCOPED_TRACE(one.what);
        Words arguments{"-f", "lavfi", "-i", one.source};
        arguments.insert(arguments.end(), one.encoding.begin(), one.encoding.end());
        Export(Make(one.file, arguments));

        auto const described = Exported();
        auto const picture = StreamOf(described, "video");
        EXPECT_EQ(picture["nb_frames"], std::to_string(one.pictures));
        constexpr double kOnePicture = 0.041;
        EXPECT_NEAR(ExportedDuration(), one.duration, kOnePicture);
        EXPECT_EQ(picture["width"], one.width);
        EXPECT_EQ(picture["height"], one.height);
        EXPECT_EQ(picture["color_space"], one.matrix);
        EXPECT_EQ(picture["color_range"], "tv");
        EXPECT_TRUE(picture.contains("color_transfer") && picture.contains("color_primaries"));
        EXPECT_EQ(picture.value("field_order", "progressive"), "progressive");
        EXPECT_EQ(StreamOf(described, "audio").value("channels", 0), one.channels);
        EXPECT_EQ(described["streams"].size(), one.channels == 0 ? 1u : 2u);
        if (one.colour.red < 0) continue;
        auto const colour = testmovies::FirstColour(output);
        constexpr int kTolerance = 6;
        EXPECT_NEAR(colour.red, one.colour.red, kTolerance);
        EXPECT_NEAR(colour.green, one.colour.green, kTolerance);
        EXPECT_NEAR(colour.blue, one.colour.blue, kTolerance);
    }
}

TEST_F(ExportSettingsTest, ATurnedMovieStandsUprightAndWidePixelsStayWide) {
    auto const flat = directory.Path() / "flat.mp4";
    auto const turned = directory.Path() / "turned.mp4";
    testmovies::Make(flat, {"-f", "lavfi", "-i", kPatternSource, "-vf", "setsar=4/3"});
    testmovies::Make(turned,
                     {"-i", FfmpegFileName(flat), "-c", "copy", "-metadata:s:v:0", "rotate=90"});
    Export(flat);
    auto const wide = StreamOf(testmovies::Describe(output), "video");
    EXPECT_EQ(wide["sample_aspect_ratio"], "4:3");
    Export(turned);
    auto const upright = StreamOf(testmovies::Describe(output), "video");
    EXPECT_EQ(upright["width"], 54);
    EXPECT_EQ(upright["height"], 96);
    EXPECT_EQ(upright["sample_aspect_ratio"], "3:4");
    EXPECT_FALSE(upright.contains("side_data_list"));
}

}  // namespace
}  // namespace quillohostkit
