#include "quillohostkit/media/MovieExport.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

#include "quillohostkit/media/FileChecksum.h"
#include "quillohostkit/process/Failure.h"
#include "tests/quillohostkit/media/TestMovies.h"
#include "tests/support/MainThreadLoop.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

using testing::HasSubstr;

class MovieExportTest : public testing::Test {
protected:
    /// A movie in the test's directory, with these parts.
    Movie Make(char const* name, std::vector<std::vector<std::string>> const& parts) {
        std::vector<std::string> arguments;
        for (auto const& part : parts)
            arguments.insert(arguments.end(), part.begin(), part.end());
        testmovies::Make(directory.Path() / name, arguments);
        MovieProbe const probe(directory.Path() / name);
        return loop.Await(probe.Result());
    }

    ExportedFile Export(Movie const& movie) {
        MovieExport const exporter(movie, output, [this](double fraction) { last = fraction; });
        return loop.Await(exporter.Result());
    }

    [[nodiscard]] std::size_t CountOutputs() const {
        std::size_t count = 0;
        for (auto const& entry : std::filesystem::directory_iterator(output.parent_path()))
            count += entry.is_regular_file() ? 1 : 0;
        return count;
    }

    void SetUp() override { std::filesystem::create_directory(output.parent_path()); }

    testsupport::MainThreadLoop loop;
    testsupport::TemporaryDirectory directory;
    std::filesystem::path const output = directory.Path() / "out" / "-100%d 🎬.mp4";
    double last = -1;
};

TEST_F(MovieExportTest, MakesAFileThatBrowsersPlay) {
    auto const chapters = directory.Write(
        "chapters",
        ";FFMETADATA1\nlocation=+52.5+13.4/\n[CHAPTER]\nTIMEBASE=1/1\nSTART=0\nEND=1\n");
    auto const movie = Make(
        "in.mkv", {testmovies::kPicture,
                   testmovies::kSound,
                   {"-i", chapters, "-map_metadata", "2", "-vf", "format=yuv444p,scale=97:55"}});

    auto const exported = Export(movie);
    EXPECT_EQ(exported.file, output);
    EXPECT_EQ(exported.bytes, std::filesystem::file_size(output));
    EXPECT_EQ(exported.sha256, Sha256OfFile(output));
    EXPECT_EQ(CountOutputs(), 1u);
    EXPECT_EQ(last, 1);

    auto const described = testmovies::Describe(output);
    auto const& picture = described["streams"][0];
    EXPECT_EQ(picture["codec_name"], "h264");
    EXPECT_EQ(picture["pix_fmt"], "yuv420p");
    EXPECT_EQ(picture["width"], 98);
    EXPECT_EQ(picture["height"], 56);
    EXPECT_EQ(described["streams"][1]["codec_name"], "aac");
    EXPECT_EQ(described["streams"].size(), 2u);
    EXPECT_TRUE(described["chapters"].empty());
    EXPECT_FALSE(described["format"]["tags"].contains("location"));
}

TEST_F(MovieExportTest, ExportsSoundAlone) {
    Export(Make("in.wav", {testmovies::kSound}));
    auto const described = testmovies::Describe(output);
    EXPECT_EQ(described["streams"].size(), 1u);
    EXPECT_EQ(described["streams"][0]["codec_name"], "aac");
}

TEST_F(MovieExportTest, LeavesNothingBehindWhenItIsCalledOff) {
    Movie movie = Make("in.mp4", {testmovies::kPicture});
    {
        MovieExport const exporter(movie, output, [](double) {});
        loop.WaitUntil([] { return true; });
    }
    EXPECT_EQ(CountOutputs(), 0u);
}

TEST_F(MovieExportTest, ExportsTheFileThatWasProbedThoughItsNameIsAnothersNow) {
    Movie const movie = Make("in.mp4", {testmovies::kPicture});
    testmovies::Make(directory.Path() / "secret.mp4",
                     {"-f", "lavfi", "-i", "testsrc2=s=64x64:d=3"});
    // As a movie that can be exported, a list of one that must not be.
    auto const list = directory.Write("list", "ffconcat version 1.0\nfile secret.mp4\n");
    std::filesystem::rename(list, movie.file);
    Export(movie);
    EXPECT_EQ(testmovies::Describe(output)["streams"][0]["width"], 96);

    // What is written into the very file is read as what the file was.
    Movie const overwritten = Make("in.mp4", {testmovies::kPicture});
    directory.Write("in.mp4", "ffconcat version 1.0\nfile secret.mp4\n");
    EXPECT_THROW(Export(overwritten), Failure);
}

TEST_F(MovieExportTest, DoesNotWriteOverTheMovieItself) {
    Movie const movie = Make("in.mp4", {testmovies::kPicture});
    std::filesystem::create_hard_link(movie.file, output);
    EXPECT_THROW(Export(movie), Failure);
    EXPECT_TRUE(movie.opened->IsAt(output));
}

TEST_F(MovieExportTest, SaysWhyAnExportFailedAndLeavesNothingBehind) {
    Movie const movie = Make("in.mp4", {testmovies::kPicture});
    auto const expect = [this, &movie](char const* reason) {
        try {
            Export(movie);
            ADD_FAILURE();
        } catch (Failure const& failure) {
            EXPECT_EQ(failure.GetKind(), FailureKind::Export);
            EXPECT_THAT(failure.what(), HasSubstr(reason));
        }
        EXPECT_EQ(CountOutputs(), 0u);
    };

    // A limit on the size of files is as near to a full disk as a test gets without making one.
    auto const handler = signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit const small{1024, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    expect("File too large");
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, handler);

    std::filesystem::resize_file(movie.file, 1000);
    expect("was not finished, or its copy was cut short");
    expect("(ffmpeg says: ");
}

TEST_F(MovieExportTest, SaysWhatFfmpegSaidBeforeItWasKilled) {
    Movie const movie = Make("in.mp4", {testmovies::kPicture});
    auto const ffmpeg = directory.Write("ffmpeg", "#!/bin/sh\necho Out of luck >&2\nkill -9 $$\n");
    std::filesystem::permissions(ffmpeg, std::filesystem::perms::owner_all);
    std::string const path = getenv("PATH");
    setenv("PATH", directory.Path().c_str(), 1);
    try {
        Export(movie);
        ADD_FAILURE();
    } catch (Failure const& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("the system ended ffmpeg"));
        EXPECT_THAT(failure.what(), HasSubstr("(signal 9)"));
        EXPECT_THAT(failure.what(), HasSubstr("close other programs"));
        EXPECT_THAT(failure.what(), HasSubstr("(ffmpeg says: Out of luck)"));
    }
    setenv("PATH", path.c_str(), 1);
}

TEST_F(MovieExportTest, AMovieThatCannotBeReadToItsEndIsRefusedUnlessThatIsAccepted) {
    using Words = std::vector<std::string>;
    Words const picture{"-f", "lavfi", "-i", "testsrc2=s=160x90:d=4"};
    Words const indexFirst{"-movflags", "+faststart"};
    Words const sound{"-f", "lavfi", "-i", "sine=d=4"};
    Words const brief{"-f", "lavfi", "-i", "sine=d=1"};
    struct {
        char const* file;
        std::vector<Words> parts;
        double kept;  // how much of the file
        bool hasHole;
        char const* damage;  // null: none
    } const cases[] = {
        {"cut.mp4", {picture, sound, indexFirst}, 0.6, false, "only 0:02 of 0:04 could be read"},
        {"cut.mkv", {picture, sound}, 0.6, false, "only 0:02 of 0:04 could be read"},
        {"hole.mp4", {picture, sound, indexFirst}, 1, true, "parts of its picture or sound"},
        {"cut_slow.mp4",
         {{"-f", "lavfi", "-i", "testsrc2=s=160x90:d=4", "-vf", "setpts='PTS*(1+N/100)'",
           "-fps_mode", "vfr", "-enc_time_base", "1:1000"},
          indexFirst},
         0.6,
         false,
         "of 0:07 could be read"},
        // ffmpeg reads these up to the cut without a word.
        {"cut.avi", {picture, sound}, 0.6, false, "only 0:02 of 0:04 could be read"},
        {"cut.flv", {picture, sound, {"-ar", "44100"}}, 0.6, false, "of 0:04 could be read"},
        {"cut.flac", {sound}, 0.6, false, "only 0:02 of 0:04 could be read"},
        {"cut.aiff", {sound}, 0.6, false, "only 0:02 of 0:04 could be read"},
        {"whole.avi", {picture, sound}, 1, false, nullptr},
        {"whole.flv", {picture, sound, {"-ar", "44100"}}, 1, false, nullptr},
        {"slow.flv", {{"-f", "lavfi", "-i", "testsrc2=s=160x90:r=1/2:d=8"}}, 1, false, nullptr},
        {"whole.flac", {sound}, 1, false, nullptr},
        {"whole.aiff", {sound}, 1, false, nullptr},
        {"whole.mp4", {picture, sound}, 1, false, nullptr},
        {"whole.mkv", {picture, sound}, 1, false, nullptr},
        {"whole.ts", {picture, sound}, 1, false, nullptr},
        {"slow.mp4", {{"-f", "lavfi", "-i", "testsrc2=s=160x90:r=1/2:d=8"}}, 1, false, nullptr},
        {"held.mp4",
         {{"-f", "lavfi", "-i", "testsrc2=s=160x90:d=2", "-vf", "setpts='PTS+if(eq(N,49),3/TB,0)'",
           "-fps_mode", "vfr"}},
         1,
         false,
         nullptr},
        // What it is without its end, it does not tell.
        {"cut.ts", {picture, sound}, 0.6, false, nullptr},
        {"brief_sound.mp4", {picture, brief}, 1, false, nullptr},
        {"brief_picture.mkv",
         {{"-f", "lavfi", "-i", "testsrc2=s=160x90:d=1"}, sound},
         1,
         false,
         nullptr},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.file);
        Make(one.file, one.parts);
        auto const file = directory.Path() / one.file;
        auto const size = std::filesystem::file_size(file);
        if (one.kept < 1)
            std::filesystem::resize_file(
                file, static_cast<std::uintmax_t>(static_cast<double>(size) * one.kept));
        if (one.hasHole) {
            std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
            out.seekp(static_cast<std::streamoff>(size / 2));
            out << std::string(size / 4, '\0');
        }
        MovieProbe const probe(file);
        auto const movie = loop.Await(probe.Result());
        if (!one.damage) {
            EXPECT_EQ(Export(movie).damage, "");
            continue;
        }
        try {
            Export(movie);
            ADD_FAILURE() << "exported";
        } catch (DamagedMovie const& refused) {
            EXPECT_EQ(refused.GetKind(), FailureKind::Export);
            EXPECT_THAT(refused.what(), HasSubstr(one.damage));
        }
        EXPECT_FALSE(std::filesystem::exists(output));
        MovieExport const exporter(
            movie, output, [](double) {}, MovieExport::Damaged::Accept);
        EXPECT_THAT(loop.Await(exporter.Result()).damage, HasSubstr(one.damage));
        std::filesystem::remove(output);
    }
    // An edit list hides what comes before its start.
    auto const edited = directory.Path() / "edited.mp4";
    testmovies::Make(
        edited, {"-ss", "1.5", "-i", FfmpegFileName(directory.Path() / "whole.mp4"), "-c", "copy"});
    MovieProbe const probe(edited);
    EXPECT_EQ(Export(loop.Await(probe.Result())).damage, "");
}

}  // namespace
}  // namespace quillohostkit
