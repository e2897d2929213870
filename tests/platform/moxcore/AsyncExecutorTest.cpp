#include "moxcore/threads/AsyncExecutor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "moxcore/async/Future.h"
#include "moxcore/debug/Trace.h"
#include "moxcore/threads/Clock.h"
#include "tests/support/ManualExecutor.h"

using namespace std::chrono_literals;
using moxcore::async::Promise;
using moxcore::threads::GetIOBoundExecutor;

namespace {

TEST(IOBoundExecutor, RunsOnAThreadThatLeavesSignalsToTheHost) {
    auto const blocksSignals = [] {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        return sigismember(&blocked, SIGINT) && sigismember(&blocked, SIGTERM);
    };
    auto const answer = std::make_shared<Promise<std::pair<std::thread::id, bool>>>();
    GetIOBoundExecutor()->CallAsync(
        [answer, blocksSignals] { answer->SetValue(std::this_thread::get_id(), blocksSignals()); });
    auto const [thread, itBlocksSignals] = answer->GetFuture().Get();
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_TRUE(itBlocksSignals);
    EXPECT_FALSE(blocksSignals()) << "the caller's own mask must be as it was";
}

TEST(IOBoundExecutor, TracesWhatAFunctionThrows) {
    auto const traced = std::make_shared<Promise<std::string>>();
    moxcore::debug::SetTraceSink(
        [traced](int, std::string const&, std::string const& text) { traced->SetValue(text); });
    moxcore::debug::SetTraceLevel("moxcore", 0);
    GetIOBoundExecutor()->CallAsync([] { throw std::runtime_error("connection lost"); });
    EXPECT_THAT(traced->GetFuture().Get(), testing::HasSubstr("connection lost"));
    moxcore::debug::SetTraceLevel("moxcore", -1);
    moxcore::debug::SetTraceSink(nullptr);
}

TEST(IOBoundExecutor, RunsADelayedFunctionThoughOthersHoldAllThreadsButOne) {
    auto const start = std::chrono::steady_clock::now();
    auto const delayed = std::make_shared<Promise<std::chrono::steady_clock::duration>>();
    auto const done = delayed->GetFuture();
    GetIOBoundExecutor()->CallAsyncDelayed(
        [=] { delayed->SetValue(std::chrono::steady_clock::now() - start); }, 10);
    // One of them may land on the very thread that waits for the delay to pass.
    for (int i = 0; i < 3; ++i)
        GetIOBoundExecutor()->CallAsync([done] { done.Wait(); });
    EXPECT_GE(done.Get(), 10ms);
}

TEST(IOBoundExecutor, LetsTheProcessEndWhateverIsWaitingOrStuck) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const endWithWorkAtHand = [] {
        Promise<void> begun;
        GetIOBoundExecutor()->CallAsyncDelayed([] { std::abort(); }, 3'600'000);
        GetIOBoundExecutor()->CallAsync([&begun] {
            begun.SetValue();
            Promise<void> never;
            never.GetFuture().Wait();
        });
        begun.GetFuture().Wait();
        std::exit(3);
    };
    EXPECT_EXIT(endWithWorkAtHand(), testing::ExitedWithCode(3), "");
}

TEST(ManualExecutor, StandsInForThePoolAndTheClock) {
    auto const pool = GetIOBoundExecutor();
    {
        testsupport::ManualExecutor manual;
        std::string log;
        auto const note = [&log, start = moxcore::threads::Now()] {
            log += std::to_string((moxcore::threads::Now() - start) / 1ms) + " ";
        };
        GetIOBoundExecutor()->CallAsyncDelayed(note, 60'000);
        GetIOBoundExecutor()->CallAsyncDelayed(
            [&] { GetIOBoundExecutor()->CallAsyncDelayed(note, 1); }, 5);
        GetIOBoundExecutor()->CallAsync(note);
        EXPECT_EQ(manual.Waiting(), (std::vector{0ms, 5ms, 60'000ms}));
        EXPECT_EQ(manual.RunDue(), 1u);
        EXPECT_EQ(manual.AdvanceBy(1s), 2u);
        EXPECT_EQ(manual.AdvanceBy(58'999'999us), 0u);
        EXPECT_EQ(manual.AdvanceBy(1us), 1u);
        EXPECT_EQ(log, "0 6 60000 ");
    }
    EXPECT_EQ(GetIOBoundExecutor(), pool);
    EXPECT_GT(moxcore::threads::Now().time_since_epoch(), 24h * 365 * 54);
}

}  // namespace
