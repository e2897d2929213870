#include "host/editor/FrameReader.h"

#include <gmock/gmock.h>

#include <QTest>

#include "host/editor/FrameClock.h"
#include "moxcore/threads/MainThread.h"
#include "tests/quillohostkit/media/TestMovies.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohost::editor {
namespace {

constexpr int kPatience = 60'000;  // milliseconds

class FrameReaderTest : public testing::Test {
protected:
    /// A movie each of whose pictures is lighter than the one before.
    quillohostkit::Movie MakeMovie() {
        auto const file = directory.Path() / "a 100% \"grey\" movie.mov";
        testmovies::Make(file, {"-f", "lavfi", "-i", "nullsrc=s=64x36:r=25:d=1", "-vf",
                                "geq=lum='20+N*8':cb=128:cr=128,setsar=2", "-c:v", "libx264"});
        quillohostkit::MovieProbe const probe(file);
        moxcore::threads::MainThread::RunUntil([&] { return probe.Result().IsComplete(); });
        return probe.Result().Get();
    }

    void Read(quillohostkit::Movie const& movie, int frame) {
        reader.Read({movie, FrameClock(movie).SeekTime(frame), QSize(256, 256)});
    }

    [[nodiscard]] bool WaitUntil(std::function<bool()> const& done) {
        return QTest::qWaitFor(done, kPatience);
    }

    /// The number of the picture that was read last; -1 before there is one.
    [[nodiscard]] int LastRead() const {
        if (frames.empty()) return -1;
        double const luma = qRed(frames.back().pixel(10, 10)) * 219 / 255.0 + 16;
        return static_cast<int>(std::lround((luma - 20) / 8));
    }

    testsupport::TemporaryDirectory directory;
    std::vector<QImage> frames;
    std::vector<std::string> failures;
    FrameReader reader{{.onFrame = [this](auto const& frame, auto&) { frames.push_back(frame); },
                        .onFailure = [this](auto const& line) { failures.push_back(line); }}};
};

TEST_F(FrameReaderTest, ReadsThePictureThatIsAskedForAsLargeAsFits) {
    auto const movie = MakeMovie();
    for (int frame : {0, 1, 13, 24}) {
        auto const before = frames.size();
        Read(movie, frame);
        ASSERT_TRUE(WaitUntil([&] { return frames.size() > before; }));
        EXPECT_EQ(LastRead(), frame);
    }
    EXPECT_EQ(frames.back().size(), QSize(256, 72));  // its pixels are twice as wide as high
    EXPECT_THAT(failures, testing::IsEmpty());
}

TEST_F(FrameReaderTest, LeavesOutWhatIsOvertaken) {
    auto const movie = MakeMovie();
    for (int frame = 0; frame <= 20; ++frame)
        Read(movie, frame);
    ASSERT_TRUE(WaitUntil([this] { return LastRead() == 20; }));
    EXPECT_LT(frames.size(), 20U);
}

TEST_F(FrameReaderTest, EndsWhileItReads) {
    auto const movie = MakeMovie();
    FrameReader ending({.onFrame = [](auto&, auto&) { ADD_FAILURE(); }, .onFailure = nullptr});
    ending.Read({movie, 0, QSize(256, 256)});
}

TEST_F(FrameReaderTest, ReadsTheFileThatWasProbedThoughItsNameIsGone) {
    auto const movie = MakeMovie();
    std::filesystem::remove(movie.file);
    Read(movie, 13);
    ASSERT_TRUE(WaitUntil([this] { return LastRead() >= 0 || !failures.empty(); }));
    EXPECT_EQ(LastRead(), 13);
}

TEST_F(FrameReaderTest, SaysWhyThereIsNoPicture) {
    auto const movie = MakeMovie();
    std::filesystem::resize_file(movie.file, 1000);
    Read(movie, 0);
    ASSERT_TRUE(WaitUntil([this] { return !failures.empty(); }));
    EXPECT_THAT(failures.front(), testing::HasSubstr("movie.mov\": "));
}

}  // namespace
}  // namespace quillohost::editor
