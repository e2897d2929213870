#include "quillohostkit/media/MovieProbe.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "quillohostkit/process/Failure.h"
#include "tests/quillohostkit/media/TestMovies.h"
#include "tests/support/MainThreadLoop.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

class MovieProbeTest : public testing::Test {
protected:
    Movie Probe(std::filesystem::path const& path) {
        MovieProbe const probe(path);
        return loop.Await(probe.Result());
    }

    void ExpectRefusal(std::filesystem::path const& path, char const* reason) {
        try {
            static_cast<void>(Probe(path));
            ADD_FAILURE() << "accepted: " << path;
        } catch (Failure const& failure) {
            EXPECT_EQ(failure.GetKind(), FailureKind::Export);
            EXPECT_THAT(failure.what(), HasSubstr(path.string()));
            EXPECT_THAT(failure.what(), HasSubstr(reason));
        }
    }

    testsupport::MainThreadLoop loop;
    testsupport::TemporaryDirectory directory;
};

TEST_F(MovieProbeTest, TellsWhatIsInAMovieWhateverItsName) {
    for (char const* name : {"plain.mov", "-y.mp4", "100%d 'quoted' \"twice\".mkv", "🎬.mp4",
                             "pipe:1.mp4", "line\nfeed.mp4"}) {
        auto const file = directory.Path() / name;
        testmovies::Make(file, testmovies::kPicture);
        auto const movie = Probe(file);
        EXPECT_TRUE(movie.hasPicture && !movie.hasSound) << name;
        EXPECT_NEAR(movie.duration.value_or(0), 1, 0.1) << name;
        EXPECT_EQ(movie.frameRate, 25) << name;
        EXPECT_THAT(movie.format, AnyOf("mov", "matroska")) << name;
    }
}

TEST_F(MovieProbeTest, DoesNotTakeACoverForAPicture) {
    auto const cover = directory.Path() / "cover.png";
    testmovies::Make(cover, {"-f", "lavfi", "-i", "testsrc2=d=1", "-frames:v", "1"});
    auto const album = directory.Path() / "album.mp3";
    auto arguments = testmovies::kSound;
    arguments.insert(arguments.end(), {"-i", cover, "-map", "0", "-map", "1", "-c:v", "copy",
                                       "-disposition:v", "attached_pic"});
    testmovies::Make(album, arguments);

    auto const movie = Probe(album);
    EXPECT_TRUE(movie.hasSound && !movie.hasPicture);
    ExpectRefusal(cover, "still picture");
}

TEST_F(MovieProbeTest, RefusesWhatIsNoMovieAndSaysWhy) {
    auto const movie = directory.Path() / "movie.mp4";
    testmovies::Make(movie, testmovies::kPicture);
    std::filesystem::resize_file(movie, 1000);
    ASSERT_EQ(mkfifo((directory.Path() / "pipe").c_str(), 0600), 0);

    ExpectRefusal(directory.Path() / "missing.mp4", "there is no such file");
    ExpectRefusal(directory.Path(), "it is a directory");
    ExpectRefusal(directory.Path() / "pipe", "it is no file");
    ExpectRefusal(directory.Write("empty.mp4", ""), "it is empty");
    ExpectRefusal(directory.Write("notes.mp4", "To do: the titles.\n"), "content is no movie");
    ExpectRefusal(movie, "was not finished, or its copy was cut short");
}

TEST_F(MovieProbeTest, RefusesAMovieThatIsProtected) {
    auto const movie = directory.Path() / "protected.mp4";
    for (auto const* part : {&testmovies::kPicture, &testmovies::kSound}) {
        auto arguments = *part;
        arguments.insert(arguments.end(), {"-encryption_scheme", "cenc-aes-ctr", "-encryption_key",
                                           "0123456789abcdef0123456789abcdef", "-encryption_kid",
                                           "fedcba9876543210fedcba9876543210"});
        testmovies::Make(movie, arguments);
        ExpectRefusal(movie, "protected against copying; share an export without protection");
    }
}

TEST_F(MovieProbeTest, RefusesListsOfOtherFilesWhateverTheirNames) {
    testmovies::Make(directory.Path() / "other.mp4", testmovies::kPicture);
    testmovies::Make(directory.Path() / "1.png",
                     {"-f", "lavfi", "-i", "testsrc2=d=1", "-frames:v", "1"});
    std::string const other = (directory.Path() / "other.mp4").string();
    std::pair<char const*, std::string> const lists[] = {
        {"concat.mp4", "ffconcat version 1.0\nfile other.mp4\n"},
        {"hls.mov", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nother.mp4\n#EXT-X-ENDLIST\n"},
        {"list.m3u8",
         "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nother.mp4\n"
         "#EXT-X-ENDLIST\n"},
        {"dash.mp4",
         "<?xml version=\"1.0\"?><MPD profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\" "
         "type=\"static\" mediaPresentationDuration=\"PT1S\">"
         "<Period><AdaptationSet mimeType=\"video/mp4\"><Representation id=\"1\">"
         "<BaseURL>file:" +
             other +
             "</BaseURL></Representation></AdaptationSet>"
             "</Period></MPD>"},
        {"sdp.mp4",
         "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
         "m=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n"},
    };
    for (auto const& [name, text] : lists)
        ExpectRefusal(directory.Write(name, text), "in no format that is shared");
    // Not the pictures beside it, either.
    ExpectRefusal(directory.Write("%d.png", "x"), "content is no movie");
}

TEST_F(MovieProbeTest, SaysThatAFileMayNotBeRead) {
    auto const file = directory.Write("private.mp4", "x");
    std::filesystem::permissions(file, std::filesystem::perms::none);
    // The rights of a file do not bind the superuser.
    uid_t const user = geteuid();
    std::filesystem::permissions(directory.Path(), std::filesystem::perms::all);
    ASSERT_TRUE(user != 0 || seteuid(65534) == 0);
    ExpectRefusal(file, "Permission denied");
    ASSERT_EQ(seteuid(user), 0);
}

}  // namespace
}  // namespace quillohostkit
