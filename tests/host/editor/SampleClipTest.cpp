#include "host/editor/SampleClip.h"

#include <gmock/gmock.h>

#include "moxcore/threads/MainThread.h"
#include "quillohostkit/process/Failure.h"
#include "tests/quillohostkit/media/TestMovies.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohost::editor {
namespace {

namespace fs = std::filesystem;
using moxcore::threads::MainThread;

TEST(SampleClip, IsAMovieWithSound) {
    testsupport::TemporaryDirectory const directory;
    auto const file = directory.Path() / "Sample clip.mov";
    SampleClip const clip(file);
    MainThread::RunUntil([&] { return clip.Result().IsComplete(); });
    EXPECT_EQ(clip.Result().Get(), file);
    EXPECT_EQ(testmovies::Describe(file)["streams"].size(), 2U);
}

TEST(SampleClip, LeavesNothingBehindWhenItIsCalledOffOrFails) {
    testsupport::TemporaryDirectory const directory;
    { SampleClip const calledOff(directory.Path() / "clip.mov"); }
    EXPECT_TRUE(fs::is_empty(directory.Path()));

    SampleClip const failing(directory.Path() / "missing" / "clip.mov");
    MainThread::RunUntil([&] { return failing.Result().IsComplete(); });
    EXPECT_THROW(static_cast<void>(failing.Result().Get()), quillohostkit::Failure);
    EXPECT_TRUE(fs::is_empty(directory.Path()));
}

}  // namespace
}  // namespace quillohost::editor
