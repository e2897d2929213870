#include "moxcore/threads/AsyncExecutor.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <future>
#include <latch>
#include <stdexcept>
#include <thread>

#include "moxcore/threads/Clock.h"
#include "tests/support/ManualExecutor.h"

using namespace std::chrono_literals;
using moxcore::threads::GetIOBoundExecutor;

namespace {

TEST(IOBoundExecutor, RunsOnAThreadThatLeavesSignalsToTheHost) {
    std::promise<std::pair<std::thread::id, bool>> promise;
    GetIOBoundExecutor()->CallAsync([&promise] {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        promise.set_value({std::this_thread::get_id(),
                           sigismember(&blocked, SIGINT) && sigismember(&blocked, SIGTERM)});
    });
    auto const [thread, signalsBlocked] = promise.get_future().get();
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_TRUE(signalsBlocked);
    sigset_t ours;
    pthread_sigmask(SIG_SETMASK, nullptr, &ours);
    EXPECT_FALSE(sigismember(&ours, SIGINT)) << "the caller's own mask must be as it was";
}

TEST(IOBoundExecutor, SurvivesFunctionsThatThrow) {
    constexpr int kFailures = 20;  // more than there are threads
    std::latch ran(kFailures + 1);
    for (int i = 0; i < kFailures; ++i)
        GetIOBoundExecutor()->CallAsync([&ran] {
            ran.count_down();
            throw std::runtime_error("lost");
        });
    GetIOBoundExecutor()->CallAsync([&ran] { ran.count_down(); });
    ran.wait();
    EXPECT_TRUE(ran.try_wait());
}

TEST(IOBoundExecutor, RunsADelayedFunctionInTimeWhileOthersHoldTheirThreads) {
    auto const start = std::chrono::steady_clock::now();
    std::promise<std::chrono::steady_clock::duration> delayed;
    auto const done = delayed.get_future().share();
    GetIOBoundExecutor()->CallAsyncDelayed(
        [&] { delayed.set_value(std::chrono::steady_clock::now() - start); }, 10);
    // They may land on the very thread that waits for the delay to pass.
    std::latch released(3);
    for (int i = 0; i < 3; ++i)
        GetIOBoundExecutor()->CallAsync([done, &released] {
            done.wait();
            released.count_down();
        });
    EXPECT_GE(done.get(), 10ms);
    released.wait();
}

TEST(IOBoundExecutor, LetsTheProcessEndWhateverIsWaitingOrStuck) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const endWithWorkAtHand = [] {
        std::promise<void> begun;
        GetIOBoundExecutor()->CallAsync([&begun] {
            begun.set_value();
            std::promise<void>().get_future().wait();
        });
        GetIOBoundExecutor()->CallAsyncDelayed([] { std::abort(); }, 3'600'000);
        begun.get_future().wait();
        std::exit(3);
    };
    EXPECT_EXIT(endWithWorkAtHand(), testing::ExitedWithCode(3), "");
}

TEST(ManualExecutor, StandsInForThePoolAndTheClock) {
    auto const pool = GetIOBoundExecutor();
    {
        testsupport::ManualExecutor manual;
        auto const start = moxcore::threads::Now();
        std::vector<std::pair<std::string, std::chrono::microseconds>> log;
        auto const note = [&log, start](char const* entry) {
            return
                [&log, start, entry] { log.emplace_back(entry, moxcore::threads::Now() - start); };
        };
        GetIOBoundExecutor()->CallAsyncDelayed(note("minute"), 60'000);
        GetIOBoundExecutor()->CallAsyncDelayed(
            [&] { GetIOBoundExecutor()->CallAsyncDelayed(note("second"), 1); }, 5);
        GetIOBoundExecutor()->CallAsync(note("at once"));
        EXPECT_EQ(manual.Waiting(), (std::vector{0ms, 5ms, 60'000ms}));
        EXPECT_EQ(manual.RunDue(), 1u);
        EXPECT_EQ(manual.AdvanceBy(1s), 2u);
        EXPECT_EQ(manual.AdvanceBy(58'999'999us), 0u);
        EXPECT_EQ(manual.AdvanceBy(1us), 1u);
        EXPECT_EQ(log, (decltype(log){{"at once", 0us}, {"second", 6ms}, {"minute", 60s}}));
    }
    EXPECT_EQ(GetIOBoundExecutor(), pool);
    EXPECT_GT(moxcore::threads::Now().time_since_epoch(), 24h * 365 * 54);
}

}  // namespace
