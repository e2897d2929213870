#include "quillohostkit/state/KeyLocks.h"

#include <gmock/gmock.h>

#include "quillohostkit/process/Failure.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

TEST(KeyLocks, AreHeldByOneAtATime) {
    testsupport::TemporaryDirectory const directory;
    KeyLocks const mine(directory.Path() / "locks");
    KeyLocks const theirs(directory.Path() / "locks");
    int waits = 0;
    auto const onWait = [&waits] { ++waits; };

    auto held = mine.Take("movie", onWait).Get();
    EXPECT_TRUE(theirs.Take("another movie", onWait).IsComplete());
    EXPECT_EQ(waits, 0);
    auto const waiting = theirs.Take("movie", onWait);
    EXPECT_EQ(waits, 1);
    EXPECT_FALSE(waiting.IsComplete());

    held = nullptr;
    EXPECT_NE(waiting.Get(), nullptr);
}

TEST(KeyLocks, FailWhereTheirFileCannotBeMade) {
    testsupport::TemporaryDirectory const directory;
    KeyLocks const locks(directory.Path() / "missing" / "locks");
    EXPECT_THROW(static_cast<void>(locks.Take("movie", [] {})), Failure);
}

}  // namespace
}  // namespace quillohostkit
