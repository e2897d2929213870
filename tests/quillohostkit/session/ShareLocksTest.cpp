#include "quillohostkit/session/ShareLocks.h"

#include <gmock/gmock.h>

#include "moxcore/threads/MainThread.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

class ShareLocksTest : public testing::Test {
protected:
    /// Takes what somebody else could have, once it is free.
    [[nodiscard]] std::shared_ptr<KeyLocks::Lock> TakeElsewhere(char const* key) {
        return KeyLocks(file).Take(key, [] {}).Get();
    }
    /// Somebody who asks stays in the queue and has the key for a moment once it is let go of.
    [[nodiscard]] bool IsHeld(char const* key) {
        bool isHeld = false;
        static_cast<void>(KeyLocks(file).Take(key, [&] { isHeld = true; }));
        return isHeld;
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
    EXPECT_TRUE(IsHeld("movie") && IsHeld("name"));
    Take({"movie", "name"});
    EXPECT_EQ(taken, 2) << "they are held already";
    locks.Release();
    EXPECT_NE(TakeElsewhere("movie"), nullptr);
    EXPECT_NE(TakeElsewhere("name"), nullptr);
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
    EXPECT_TRUE(IsHeld("name"));
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
    EXPECT_TRUE(IsHeld("another movie"));
}

}  // namespace
}  // namespace quillohostkit
