#include "moxcore/async/Future.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/ManualExecutor.h"

using namespace moxcore;
using async::Future;
using async::Promise;

namespace {

/// What Get of a complete future gives, as text.
std::string Outcome(Future<int> const& future) {
    try {
        return "value " + std::to_string(future.Get());
    } catch (async::CancelledException const&) {
        return "cancelled";
    } catch (config::ResultException const& failure) {
        return "failed " + std::to_string(failure.GetResult()) + " " + failure.what();
    } catch (std::exception const& failure) {
        return std::string("threw ") + failure.what();
    }
}

struct Completion {
    char const* description;
    std::function<void(std::optional<Promise<int>>&)> complete;
    char const* outcome;
    char const* outcomeAfterDoubling;
};

std::vector<Completion> const kCompletions{
    {"value", [](auto& promise) { promise->SetValue(21); }, "value 21", "value 42"},
    {"failure", [](auto& promise) { promise->SetFailed(-5, "broken"); }, "failed -5 broken",
     "failed -5 broken"},
    {"exception",
     [](auto& promise) {
         promise->SetException(std::make_exception_ptr(std::out_of_range("range")));
     },
     "threw range", "threw range"},
    {"cancelled", [](auto& promise) { promise->Cancel(); }, "cancelled", "cancelled"},
    {"dropped", [](auto& promise) { promise.reset(); }, "cancelled", "cancelled"},
    {"continuation throws", [](auto& promise) { promise->SetValue(-1); }, "value -1",
     "threw negative"},
    {"completed twice",
     [](auto& promise) {
         EXPECT_TRUE(promise->SetValue(1));
         EXPECT_FALSE(promise->SetFailed(-1, "late"));
         EXPECT_FALSE(promise->Cancel());
     },
     "value 1", "value 2"}};

TEST(Future, DeliversEachOutcomeOnceHoweverItIsContinued) {
    for (auto const& completion : kCompletions)
        for (bool const attachBefore : {true, false})
            for (bool const onExecutor : {true, false}) {
                SCOPED_TRACE(std::string(completion.description) +
                             (attachBefore ? ", attached before" : ", attached after") +
                             (onExecutor ? ", on an executor" : ""));
                testsupport::ManualExecutor executor;
                std::optional<Promise<int>> promise(std::in_place);
                auto const future = promise->GetFuture();
                Future<int> doubled;
                int calls = 0;
                auto const attach = [&] {
                    doubled = future.Then(onExecutor ? executor.Executor() : nullptr,
                                          [&calls](Future<int> const& done) {
                                              ++calls;
                                              int const value = done.Get();
                                              if (value < 0) throw std::domain_error("negative");
                                              return 2 * value;
                                          });
                };
                if (attachBefore) attach();
                EXPECT_FALSE(future.IsComplete());
                EXPECT_FALSE(future.GetException());
                completion.complete(promise);
                if (!attachBefore) attach();

                EXPECT_EQ(calls, onExecutor ? 0 : 1);
                executor.RunDue();
                EXPECT_EQ(calls, 1);
                ASSERT_TRUE(doubled.IsComplete());
                EXPECT_EQ(Outcome(future), completion.outcome);
                EXPECT_EQ(Outcome(doubled), completion.outcomeAfterDoubling);
            }
}

TEST(Future, ContinuesInTheOrderAttachedAndOnTheCompletingThread) {
    Promise<void> promise;
    std::vector<int> order;
    std::thread::id ranOn;
    auto const first = promise.GetFuture().Then([&](Future<void> const&) {
        order.push_back(1);
        ranOn = std::this_thread::get_id();
    });
    auto const second = promise.GetFuture().Then([&](Future<void> const&) { order.push_back(2); });
    std::thread completing([&promise] { promise.SetValue(); });
    auto const completingThread = completing.get_id();
    second.Get();
    completing.join();
    EXPECT_EQ(order, (std::vector{1, 2}));
    EXPECT_EQ(ranOn, completingThread);
}

TEST(Future, RunsEachContinuationOnceWhoeverIsFirst) {
    constexpr int kRounds = 200;
    constexpr int kPerThread = 20;
    for (int round = 0; round < kRounds; ++round) {
        Promise<int> promise;
        std::atomic<int> calls = 0;
        std::latch start(3);
        auto const attach = [&, future = promise.GetFuture()] {
            start.arrive_and_wait();
            for (int i = 0; i < kPerThread; ++i)
                future.OnComplete([&calls](Future<int> const& done) { calls += done.Peek(); });
        };
        {
            std::jthread const first(attach);
            std::jthread const second(attach);
            start.arrive_and_wait();
            promise.SetValue(1);
        }
        ASSERT_EQ(calls, 2 * kPerThread);
    }
}

TEST(Future, LetsGoOfWhatAContinuationHolds) {
    auto const watched = std::make_shared<int>();
    Future<int> next;
    {
        testsupport::ManualExecutor executor;
        Promise<int> promise;
        // Held alone, so no copy can have been made.
        next = promise.GetFuture().Then([held = std::make_unique<std::shared_ptr<int>>(watched)](
                                            Future<int> const& done) { return done.Get(); });
        auto const onExecutor = promise.GetFuture().Then(
            executor.Executor(), [watched](Future<int> const& done) { return done.Get(); });
        EXPECT_EQ(watched.use_count(), 3);
        promise.SetValue(1);
        EXPECT_EQ(watched.use_count(), 2) << "the one that has run";
        EXPECT_FALSE(onExecutor.IsComplete());
        next = onExecutor;
    }
    EXPECT_EQ(Outcome(next), "cancelled") << "the executor has dropped it";
}

TEST(Future, HandsTheExecutorOn) {
    testsupport::ManualExecutor executor;
    auto const failed = Future<int>::CreateFailed(-7, "expired", executor.Executor());
    EXPECT_EQ(Outcome(failed), "failed -7 expired");
    auto const next = failed.Then([](Future<int> const&) {});
    EXPECT_EQ(next.GetExecutor(), executor.Executor());
    next.Get();
    EXPECT_FALSE(Promise<void>().GetFuture().GetExecutor());
}

}  // namespace
