#include "moxcore/debug/Trace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

using namespace moxcore::debug;

namespace {

TEST(Trace, HandsOnWhatIsWantedAndNeverFailsTheCaller) {
    std::vector<std::string> log;
    SetTraceSink([&log](int level, std::string const& category, std::string const& text) {
        log.push_back(category + std::to_string(level) + text);
        throw std::runtime_error("no space left");
    });
    auto const before = TraceChangeCount();
    Trace(0, "Native", "silent until switched on");
    EXPECT_EQ(TraceChangeCount(), before);
    SetTraceLevel("Native", 5);
    SetTraceLevel("Other", 9);
    EXPECT_GT(TraceChangeCount(), before);

    EXPECT_TRUE(TraceEnabled("Native", 5, 1));
    EXPECT_FALSE(TraceEnabled("Native", 5, 2)) << "names another sink";
    EXPECT_FALSE(TraceEnabled("Native", 6, 1));
    EXPECT_FALSE(TraceEnabled("Unknown", 0, 1));
    Trace(5, "Native", "a");
    Trace(6, "Native", "too fine");
    Trace(6, "Other", "b");
    SetTraceLevel("Native", -1);
    SetTraceLevel("Other", -1);
    Trace(0, "Native", "off again");
    EXPECT_EQ(log, (std::vector<std::string>{"Native5a", "Other6b"}));
    SetTraceSink(nullptr);
}

TEST(Trace, TakesItsLevelsFromTheEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    setenv("MOXCORE_TRACE", "Native:5,:3,broken,Other:x,Other:2", 1);
    auto const traceAll = [] {
        Trace(5, "Native", "wanted\nlines");
        Trace(6, "Native", "unwanted");
        Trace(2, "Other", "last");
        std::exit(0);
    };
    EXPECT_EXIT(traceAll(), testing::ExitedWithCode(0),
                "\":3\" ignored.*\"broken\" ignored.*\"Other:x\" ignored.*"
                "Native:5 wanted\nlines\nOther:2 last\n$");
    unsetenv("MOXCORE_TRACE");  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace
