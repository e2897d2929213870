#include "quillocommon/SerialExecutor.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/ManualExecutor.h"

namespace {

TEST(SerialExecutor, RunsOneAfterTheOtherInTheirOrder) {
    testsupport::ManualExecutor below;
    auto const serial = std::make_shared<quillocommon::SerialExecutor>();
    std::string log;
    serial->CallAsync([&] { log += "a"; });
    serial->CallAsync([&] {
        serial->CallAsync([&] { log += "d"; });
        log += "b";
    });
    serial->CallAsync([&] { log += "c"; });
    below.RunDue();
    EXPECT_EQ(log, "abcd");
}

/// At the end of a process; a function may hold the executor that it waits in.
TEST(SerialExecutor, DropsWhatWaitsWithTheExecutorBelow) {
    auto const token = std::make_shared<int>();
    {
        testsupport::ManualExecutor below;
        auto const serial = std::make_shared<quillocommon::SerialExecutor>();
        for (int i = 0; i < 2; ++i)
            serial->CallAsync([serial, token] {});
    }
    EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
