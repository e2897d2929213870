#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/quillohostkit/media/ExportTest.h"

namespace quillohostkit {
namespace {

using ExportTimesTest = ExportTest;
using ExportTracksTest = ExportTest;

TEST_F(ExportTimesTest, PicturesKeepTheirTimes) {
    auto const recording = directory.Path() / "recording.webm";
    testmovies::Make(
        recording,
        {"-f", "lavfi", "-i", "testsrc2=s=96x54:r=25:d=2", "-vf",
         "settb=1/1000,setpts='100+floor(N*41.7+mod(N,3)*9+if(gt(N,20),700,0))'", "-fps_mode",
         "passthrough", "-enc_time_base", "1:1000", "-c:v", "libvpx-vp9", "-cpu-used", "8"});
    // In this format nothing claims a rate.
    auto const unclaimed = directory.Path() / "recording.mp4";
    testmovies::Make(unclaimed, {"-i", FfmpegFileName(recording), "-c", "copy"});
    auto const times = testmovies::PictureTimes(recording);
    ASSERT_EQ(times.size(), 50u);
    for (auto const& movie : {recording, unclaimed}) {
        Export(movie);
        auto const exported = testmovies::PictureTimes(output);
        ASSERT_EQ(exported.size(), times.size());
        for (std::size_t i = 0; i < times.size(); ++i)
            EXPECT_NEAR(exported[i] - exported[0], times[i] - times[0], 1) << i;
    }

    // Matroska rounds the times of a constant rate to milliseconds.
    auto const constant = directory.Path() / "constant.mkv";
    testmovies::Make(constant, {"-f", "lavfi", "-i", "testsrc2=s=96x54:r=30000/1001:d=1"});
    Export(constant);
    auto const picture = StreamOf(testmovies::Describe(output), "video");
    EXPECT_EQ(picture["r_frame_rate"], "30000/1001");
    EXPECT_EQ(picture["avg_frame_rate"], "30000/1001");
}

TEST_F(ExportTimesTest, TheLastPictureIsHeldAsLongAsTheMovieHoldsIt) {
    auto const many = Make(
        "many.mp4", {"-f", "lavfi", "-i", "testsrc2=s=96x54:d=40:r=5", "-preset", "ultrafast"});
    Words const five{"-f", "lavfi", "-i", "testsrc2=s=96x54:d=1:r=5"};
    auto const with = [](Words words, Words const& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    auto const whole = Make("whole.mp4", five);
    Words const held{"-i",
                     FfmpegFileName(whole),
                     "-c",
                     "copy",
                     "-bsf:v",
                     "setts=pts=PTS:dts=DTS:duration="
                     "'if(eq(NEXT_DTS,NOPTS),4/TB-PTS,DURATION)'"};
    struct {
        char const* name;
        Words arguments;
        double duration;
        std::size_t pictures = 5;
    } const cases[] = {
        {"held.gif", with(five, {"-final_delay", "300"}), 3.8},
        {"held.mp4", held, 4},
        // Its sound goes on as long as it did.
        {"sound.mp4",
         with({"-f", "lavfi", "-i", "sine=d=4"},
              with(held, {"-map", "0", "-map", "1", "-c:a", "aac"})),
         4},
        // Its picture starts later than its sound, and ends later.
        {"after_sound.mp4",
         with({"-f", "lavfi", "-i", "sine=d=2", "-itsoffset", "0.5"},
              with(held, {"-map", "0", "-map", "1", "-c:a", "aac"})),
         4},
        {"constant.mp4", {"-i", FfmpegFileName(whole), "-c", "copy"}, 1},
        // In these the hold leaves the rate what it is.
        {"constant.mkv",
         {"-i", FfmpegFileName(whole), "-c", "copy", "-bsf:v",
          "setts=pts=PTS:dts=DTS:duration='if(eq(NEXT_DTS,NOPTS),4000-PTS,DURATION)'"},
         4},
        // Its first picture comes at half a second: the end that it announces is 4.5.
        {"late.mkv",
         {"-i", FfmpegFileName(whole), "-c", "copy", "-output_ts_offset", "0.5", "-bsf:v",
          "setts=pts=PTS:dts=DTS:duration='if(eq(NEXT_DTS,NOPTS),4000-PTS,DURATION)'"},
         4},
        {"long.mp4",
         {"-i", FfmpegFileName(many), "-c", "copy", "-bsf:v",
          "setts=pts=PTS:dts=DTS:duration='if(eq(NEXT_DTS,NOPTS),DURATION*2.9,DURATION)'"},
         40.38,
         200},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.name);
        Export(Make(one.name, one.arguments));
        EXPECT_NEAR(ExportedDuration(), one.duration, 0.05);
        auto const times = testmovies::PictureTimes(output);
        ASSERT_EQ(times.size(), one.pictures);
        for (std::size_t i = 0; i < times.size(); ++i)
            EXPECT_EQ(times[i] - times[0], static_cast<int>(200 * i));
    }
}

TEST_F(ExportTimesTest, EditListsAndTimesThatComeTwiceKeepTheDuration) {
    auto const whole = Make("whole.mp4", {"-f", "lavfi", "-i", "testsrc2=s=96x54:d=2", "-bf", "0"});
    // Cut within a group of pictures: the list hides what comes before the cut.
    Export(Make("edited.mp4", {"-ss", "1.48", "-i", FfmpegFileName(whole), "-c", "copy"}));
    EXPECT_NEAR(ExportedDuration(), 0.52, 0.041);

    auto const doubled = Make("doubled.mkv", {"-i", FfmpegFileName(whole), "-c", "copy", "-bsf:v",
                                              "setts=ts='floor(N/2)*80'"});
    ASSERT_EQ(testmovies::PictureTimes(doubled).size(), 50u);
    Export(doubled);
    EXPECT_NEAR(ExportedDuration(), 2, 0.081);
}

TEST_F(ExportTimesTest, InterlacedPicturesShowOneMomentAndOthersPassUnchanged) {
    Words const combed{"-f", "lavfi", "-i",
                       "smptebars=s=320x240:d=1:r=50,scroll=h=0.02,tinterlace=interleave_top"};
    auto const with = [&combed](Words const& more) {
        auto words = combed;
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    Words const flagged{"-vf", "setfield=tff", "-flags", "+ildct+ilme", "-x264opts", "tff=1"};
    struct {
        char const* name;
        Words arguments;
        int combed;
    } const cases[] = {
        {"flagged.mp4", with(flagged), 0},
        // In this file each picture says that it is interlaced, and the file that none is.
        {"flagged.mkv", with(flagged), 0},
        {"not_flagged.mp4", with({"-vf", "setfield=prog"}), 25},
        {"progressive.mp4", {"-f", "lavfi", "-i", "smptebars=s=320x240:d=1:r=25,scroll=h=0.02"}, 0},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.name);
        auto const file = Make(one.name, one.arguments);
        if (one.name != std::string("progressive.mp4")) {
            ASSERT_EQ(testmovies::CountCombed(file), 25);
        }
        Export(file);
        EXPECT_EQ(testmovies::CountCombed(output), one.combed);
        EXPECT_EQ(testmovies::PictureTimes(output).size(), 25u);
        EXPECT_EQ(StreamOf(Exported(), "video").value("field_order", "progressive"), "progressive");
    }
}

TEST_F(ExportTracksTest, OnlyPictureAndSoundAreTaken) {
    auto const titles = directory.Write("in.srt", "1\n00:00:00,000 --> 00:00:01,000\nHello\n");
    auto const cover = Make("cover.png", {"-f", "lavfi", "-i", "testsrc2=d=1", "-frames:v", "1"});
    auto const file = Make("in.mov", {"-i",
                                      cover,
                                      "-f",
                                      "lavfi",
                                      "-i",
                                      "testsrc2=s=96x54:d=1",
                                      "-f",
                                      "lavfi",
                                      "-i",
                                      "sine=d=1",
                                      "-i",
                                      titles,
                                      "-map",
                                      "0",
                                      "-map",
                                      "1",
                                      "-map",
                                      "2",
                                      "-map",
                                      "3",
                                      "-c:v:0",
                                      "copy",
                                      "-c:v:1",
                                      "libx264",
                                      "-c:s",
                                      "mov_text",
                                      "-disposition:v:0",
                                      "attached_pic",
                                      "-timecode",
                                      "01:00:00:00"});
    ASSERT_GT(testmovies::Describe(file)["streams"].size(), 3u);
    Export(file);
    auto const described = Exported();
    EXPECT_EQ(described["streams"].size(), 2u);
    EXPECT_EQ(StreamOf(described, "video")["width"], 96);
    EXPECT_EQ(StreamOf(described, "audio")["codec_name"], "aac");
}

TEST_F(ExportTracksTest, TheSoundsThatAreLeftOutAreNamed) {
    auto const file = directory.Path() / "in.mkv";
    testmovies::Make(file, {"-f",
                            "lavfi",
                            "-i",
                            "sine=d=1",
                            "-map",
                            "0",
                            "-map",
                            "0",
                            "-map",
                            "0",
                            "-metadata:s:a:0",
                            "title=Commentary",
                            "-metadata:s:a:1",
                            "language=ger",
                            "-disposition:a:0",
                            "0",
                            "-disposition:a:1",
                            "default",
                            "-disposition:a:2",
                            "0"});
    auto const movie = Probe(file);
    EXPECT_EQ(movie.sound.number, 1);
    EXPECT_EQ(movie.sound.description, "ger");
    EXPECT_THAT(movie.otherSounds, testing::ElementsAre("Commentary", "track 3"));
}

}  // namespace
}  // namespace quillohostkit
