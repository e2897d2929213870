#include "quillosdk/RetryPolicy.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "quillosdk/Transport.h"
#include "tests/support/ManualExecutor.h"

namespace {

using namespace std::chrono_literals;
using quillosdk::RetryPolicy;
using std::chrono::milliseconds;

class RetryPolicyTest : public testing::Test {
protected:
    RetryPolicyTest() {
        RetryPolicy::SetRandomSource([this] { return random; });
    }
    ~RetryPolicyTest() override { RetryPolicy::SetRandomSource({}); }

    double random = 0.5;
    testsupport::ManualExecutor executor;  // and the clock
};

TEST_F(RetryPolicyTest, WaitsLongerEachTimeUntilTheAttemptsAreUsedUp) {
    RetryPolicy policy;
    std::vector<milliseconds> delays;
    while (auto const delay = policy.NextDelay())
        delays.push_back(*delay);
    EXPECT_EQ(delays,
              (std::vector<milliseconds>{250ms, 500ms, 1s, 2s, 4s, 8s, 15s}));  // half of the bound
}

TEST_F(RetryPolicyTest, TheWaitIsAnywhereBetweenNothingAndTheBound) {
    random = 0;
    EXPECT_EQ(RetryPolicy().NextDelay(), 0ms);
    random = 0.999;
    EXPECT_EQ(RetryPolicy().NextDelay(), 499ms);
}

TEST_F(RetryPolicyTest, WaitsAsLongAsTheServiceAsksFor) {
    EXPECT_EQ(RetryPolicy().NextDelay(7s), 7s);
}

TEST_F(RetryPolicyTest, ProgressMakesTheLimitsCountAnew) {
    RetryPolicy policy({.attempts = 2});
    ASSERT_TRUE(policy.NextDelay());
    policy.Progressed();
    EXPECT_EQ(policy.NextDelay(), 250ms);
    EXPECT_FALSE(policy.NextDelay());
}

TEST_F(RetryPolicyTest, TellsOfTheWaitsThatAPersonWouldNotice) {
    RetryPolicy policy;
    std::vector<std::optional<moxcore::threads::TimePoint>> told;
    policy.SetWaitListener([&](auto since) { told.push_back(since); });
    auto const fail = [&](std::optional<milliseconds> retryAfter = {}) {
        policy.Unavailable(*policy.NextDelay(retryAfter));
    };
    auto const first = moxcore::threads::Now();
    fail();
    EXPECT_TRUE(told.empty()) << "over in a moment";
    executor.AdvanceBy(10s);
    fail();
    fail();
    policy.Answered();
    executor.AdvanceBy(10s);
    fail();
    policy.Progressed();
    policy.Answered();
    auto const second = moxcore::threads::Now();
    fail(1s);
    EXPECT_EQ(policy.NextDelay(1h), std::nullopt);
    EXPECT_EQ(told, (decltype(told){first, {}, first, {}, second, {}}));
}

TEST_F(RetryPolicyTest, DoesNotWaitBeyondItsPatience) {
    RetryPolicy policy({.attempts = 100, .patience = 60s});
    EXPECT_TRUE(policy.NextDelay(59s));
    executor.AdvanceBy(50s);
    EXPECT_FALSE(policy.NextDelay(11s));
    policy.Progressed();
    EXPECT_TRUE(policy.NextDelay(11s));
}

TEST_F(RetryPolicyTest, RepeatsWhatMayGoBetterTheNextTime) {
    for (int const status : {408, 429, 500, 502, 503, 504})
        EXPECT_TRUE(RetryPolicy::IsTransient(status)) << status;
    for (int const status : {200, 204, 301, 400, 401, 403, 404, 409, 410, 413, 422, 460, 501, 505})
        EXPECT_FALSE(RetryPolicy::IsTransient(status)) << status;
    for (auto const result : {quillosdk::kNoConnection, quillosdk::kConnectionLost})
        EXPECT_TRUE(RetryPolicy::IsTransientResult(result));
    for (auto const result :
         {quillosdk::kAnswerTooLarge, quillosdk::kMalformedAnswer, quillosdk::kBadRequest})
        EXPECT_FALSE(RetryPolicy::IsTransientResult(result));
    EXPECT_FALSE(RetryPolicy::IsTransientResult(0)) << "a cancellation";
}

TEST_F(RetryPolicyTest, ReadsRetryAfterInSecondsAndAsADate) {
    // Sun, 06 Nov 1994 08:49:37 GMT, and half a second.
    moxcore::threads::TimePoint const now(784111777s + 500ms);
    struct Row {
        char const* value;
        std::optional<milliseconds> wait;
    };
    Row const rows[] = {
        {"0", 0ms},
        {"3", 3s},
        {"120", 120s},
        {"121", 120s},
        {"99999999999999999999", 120s},
        {"-1", std::nullopt},
        {"", std::nullopt},
        {"soon", std::nullopt},
        {"3.5", std::nullopt},
        {"3 seconds", std::nullopt},
        {"Sun, 06 Nov 1994 08:49:47 GMT", 9500ms},
        {"Sunday, 06-Nov-94 08:49:47 GMT", 9500ms},
        {"Sun Nov  6 08:49:47 1994", 9500ms},
        {"Sun, 06 Nov 1994 08:49:30 GMT", 0ms},
        {"Mon, 07 Nov 1994 08:49:30 GMT", 120s},
        {"Fri, 31 Dec 9999 23:59:59 GMT", 120s},
        {"Fri, 31 Dec 2147483647 23:59:59 GMT", 120s},
        {"Wed, 31 Dec 1969 23:59:59 GMT", 0ms},
        {"Sat, 01 Jan 1600 00:00:00 GMT", 0ms},
    };
    for (auto const& row : rows)
        EXPECT_EQ(RetryPolicy::ParseRetryAfter(row.value, now), row.wait) << row.value;
}

}  // namespace
