#include "host/editor/ShareLocks.h"

#include <gmock/gmock.h>

#include "moxcore/threads/MainThread.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohost::editor {
namespace {

class ShareLocksTest : public testing::Test {
protected:
    /// Takes what somebody else could have.
    [[nodiscard]] std::shared_ptr<KeyLocks::Lock> TakeElsewhere(char const* key) {
        return KeyLocks(file).Take(key, [] {}).Get();
    }
    [[nodiscard]] bool IsFree(char const* key) {
        bool isFree = true;
        static_cast<void>(KeyLocks(file).Take(key, [&] { isFree = false; }));
        return isFree;
    }
    void Take(std::vector<std::string> const& keys) {
        locks.Take(keys, [this] { ++taken; });
    }
    void WaitUntilTaken() {
        moxcore::threads::MainThread::RunUntil([this] { return taken > 0; });
    }

    testsupport::TemporaryDirectory directory;
    std::filesystem::path file = directory.Path() / "locks";
    int taken = 0;
    int waits = 0;
    ShareLocks locks{KeyLocks(file), {.onWait = [this] { ++waits; }, .onFailure = nullptr}};
};

TEST_F(ShareLocksTest, HoldsAllKeysUntilTheyAreReleased) {
    Take({"movie", "name"});
    testsupport::DrainMainThread();
    EXPECT_EQ(taken, 1);
    EXPECT_FALSE(IsFree("movie") || IsFree("name"));
    Take({"movie", "name"});
    EXPECT_EQ(taken, 2) << "they are held already";
    locks.Release();
    EXPECT_TRUE(IsFree("movie") && IsFree("name"));
    EXPECT_EQ(waits, 0);
}

TEST_F(ShareLocksTest, WaitsForAKeyWithoutBlocking) {
    auto elsewhere = TakeElsewhere("name");
    Take({"movie", "name"});
    testsupport::DrainMainThread();
    EXPECT_EQ(taken, 0);
    EXPECT_EQ(waits, 1);
    elsewhere = nullptr;
    WaitUntilTaken();
    EXPECT_FALSE(IsFree("name"));
}

TEST_F(ShareLocksTest, GivesUpWhatItWaitsForWhenOtherKeysAreWanted) {
    auto elsewhere = TakeElsewhere("movie");
    locks.Take({"movie", "name"}, [] { ADD_FAILURE() << "nobody wants them any more"; });
    testsupport::DrainMainThread();
    Take({"another movie"});
    WaitUntilTaken();
    elsewhere = nullptr;
    // The lock that is not wanted any more comes, and is let go of.
    EXPECT_NE(TakeElsewhere("movie"), nullptr);
    testsupport::DrainMainThread();
    EXPECT_FALSE(IsFree("another movie"));
}

}  // namespace
}  // namespace quillohost::editor
