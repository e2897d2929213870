#include "moxcore/threads/MainThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/QueuedFunction.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/TraceLog.h"

using moxcore::threads::AsyncCallFromMainThread;
using moxcore::threads::MainThread;
using testsupport::DrainMainThread;

namespace {

class MainThreadQueue : public testing::Test {
protected:
    ~MainThreadQueue() override {
        MainThread::SetWakeUpHook(nullptr);
        MainThread::SetFailureHandler(nullptr);
        MainThread::SetFailureObserver(nullptr);
        DrainMainThread();
    }

    void Post(std::string const& entry) {
        AsyncCallFromMainThread([this, entry] { log.push_back(entry); }, 0);
    }

    std::vector<std::string> log;
};

TEST_F(MainThreadQueue, RunsWhatWasQueuedInOrderAndLeavesTheRestForTheNextRound) {
    Post("a");
    AsyncCallFromMainThread([this] { Post("posted by b"); }, 0);
    Post("c");
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(MainThread::RunPending(), 3u);
    EXPECT_EQ(log, (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(MainThread::RunPending(), 1u);
    EXPECT_EQ(log.back(), "posted by b");
    EXPECT_EQ(MainThread::RunPending(), 0u);
}

TEST_F(MainThreadQueue, RunsTheRestInsideAFunctionThatRunsTheQueueItself) {
    AsyncCallFromMainThread(
        [this] {
            log.push_back("dialog opens");
            Post("queued by the dialog");
            MainThread::RunPending();
            log.push_back("dialog closes");
        },
        0);
    Post("queued before");
    EXPECT_EQ(MainThread::RunPending(), 1u);
    EXPECT_EQ(log, (std::vector<std::string>{"dialog opens", "queued before",
                                             "queued by the dialog", "dialog closes"}));
    Post("later");
    EXPECT_EQ(MainThread::RunPending(), 1u);
    EXPECT_EQ(log.back(), "later");
}

TEST_F(MainThreadQueue, ReportsWhatAFunctionThrowsAndRunsTheRest) {
    for (bool const handlerThrows : {false, true}) {
        log.clear();
        MainThread::SetFailureHandler([&](std::exception_ptr const& exception) {
            log.push_back(moxcore::config::ExtractMessageFromException(exception));
            if (handlerThrows) throw std::runtime_error("handler");
        });
        AsyncCallFromMainThread([] { throw std::runtime_error("first"); }, 0);
        AsyncCallFromMainThread(nullptr, 0);
        Post("last");
        EXPECT_EQ(MainThread::RunPending(), 3u);
        EXPECT_EQ(log, (std::vector<std::string>{"first", "bad_function_call", "last"}));
    }
}

TEST_F(MainThreadQueue, TellsTheObserverWhatNobodyElseHears) {
    auto const keep = [this](std::string const& who) {
        return [this, who](std::exception_ptr const& exception) {
            EXPECT_TRUE(MainThread::IsCurrent());
            log.push_back(who + moxcore::config::ExtractMessageFromException(exception));
        };
    };
    MainThread::SetFailureObserver(keep("observer: "));
    for (bool const hasHandler : {false, true}) {
        log.clear();
        if (hasHandler) MainThread::SetFailureHandler(keep("handler: "));
        AsyncCallFromMainThread([] { throw std::runtime_error("queued"); }, 0);
        std::thread([] {
            MainThread::ReportFailure(std::make_exception_ptr(std::runtime_error("reported")));
        }).join();
        EXPECT_TRUE(log.empty()) << "it is told later";
        DrainMainThread();
        EXPECT_EQ(log,
                  (std::vector<std::string>{hasHandler ? "handler: queued" : "observer: queued",
                                            "observer: reported"}));
    }
}

TEST_F(MainThreadQueue, TracesWhatTheObserverCannotHear) {
    testsupport::TraceLog traced(0, "moxcore");
    for (bool const hasObserver : {false, true}) {
        MainThread::SetFailureObserver(nullptr);
        if (hasObserver)
            MainThread::SetFailureObserver(
                [](std::exception_ptr const&) { throw std::runtime_error("observer"); });
        MainThread::ReportFailure(std::make_exception_ptr(std::runtime_error("reported")));
        Post("last");
        DrainMainThread();
        auto const texts = traced.Take();
        ASSERT_EQ(texts.size(), hasObserver ? 2u : 1u);
        EXPECT_NE(texts[0].find("reported"), std::string::npos) << texts[0];
        EXPECT_NE(texts.back().find(hasObserver ? "observer" : "reported"), std::string::npos);
        EXPECT_EQ(log.back(), "last");
    }
}

/// Closures that fit into the queue and those that do not, run and dropped.
TEST_F(MainThreadQueue, DestroysAClosureOnce) {
    auto const token = std::make_shared<int>(0);
    auto const large = [token, room = std::array<char, 200>()] { *token += 1 + room[0]; };
    for (int i = 0; i < 100; ++i) {  // the queue grows, and moves them
        moxcore::threads::QueueOnMainThread([token] { ++*token; });
        moxcore::threads::QueueOnMainThread(large);
    }
    EXPECT_EQ(token.use_count(), 202);
    DrainMainThread();
    EXPECT_EQ(*token, 200);
    EXPECT_EQ(token.use_count(), 2);
    moxcore::threads::QueuedFunction replaced(large);
    replaced = moxcore::threads::QueuedFunction([token] {});
    EXPECT_EQ(token.use_count(), 3);
}

TEST_F(MainThreadQueue, WakesTheLoopOncePerFilling) {
    int wakeUps = 0;
    Post("before there is a loop");
    MainThread::SetWakeUpHook([&wakeUps] { ++wakeUps; });
    EXPECT_EQ(wakeUps, 1) << "what was queued before the hook would never run";
    Post("a");
    EXPECT_EQ(wakeUps, 1);
    DrainMainThread();

    Post("b");
    Post("c");
    EXPECT_EQ(wakeUps, 2);
    AsyncCallFromMainThread([this] { Post("d"); }, 0);
    MainThread::RunPending();
    EXPECT_EQ(wakeUps, 3) << "what a function queued needs another round";
}

TEST_F(MainThreadQueue, KeepsTheOrderOfEachThread) {
    constexpr int kThreads = 3;
    constexpr int kPosts = 2000;
    std::vector<std::vector<int>> seen(kThreads);
    std::vector<std::thread> posting;
    for (auto& mine : seen)
        posting.emplace_back([&mine] {
            for (int i = 0; i < kPosts; ++i)
                AsyncCallFromMainThread([&mine, i] { mine.push_back(i); }, 0);
        });
    MainThread::RunUntil([&seen] {
        return std::ranges::all_of(seen, [](auto const& mine) { return mine.size() == kPosts; });
    });
    for (auto& thread : posting)
        thread.join();
    for (auto const& mine : seen)
        EXPECT_TRUE(std::ranges::is_sorted(mine));
}

}  // namespace
