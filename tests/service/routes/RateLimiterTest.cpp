#include "service/routes/RateLimiter.h"

#include <gtest/gtest.h>

#include <memory>

#include "service/http/Exchange.h"
#include "service/routes/Call.h"
#include "service/routes/RequestCount.h"

namespace quilloservice {
namespace {

using namespace std::chrono_literals;

class RateLimiterTest : public testing::Test {
protected:
    bool Admits(std::int64_t requester = 1, RequestKind kind = RequestKind::Children) {
        return limiter.Admit(Requester(requester), kind, now).admitted;
    }

    RateLimiter limiter{RateLimit{3, 10s}};
    RateLimiter::TimePoint now{1000s};
};

TEST_F(RateLimiterTest, SlidesItsWindow) {
    EXPECT_TRUE(Admits());
    now += 4s;
    EXPECT_TRUE(Admits());
    EXPECT_TRUE(Admits());
    auto refused = limiter.Admit(Requester(1), RequestKind::Children, now);
    EXPECT_FALSE(refused.admitted);
    EXPECT_EQ(refused.retryAfter, 6s);
    EXPECT_EQ(refused.limit.requests, 3u);
    now += 6s - 1ns;
    EXPECT_FALSE(Admits());
    now += 1ns;
    // Only the first request has left the window; refused ones were not counted.
    EXPECT_TRUE(Admits());
    EXPECT_FALSE(Admits());
    now += 4s;
    EXPECT_TRUE(Admits());
    EXPECT_TRUE(Admits());
    EXPECT_FALSE(Admits());
}

TEST_F(RateLimiterTest, CountsRequestersAndKindsSeparately) {
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(Admits());
    EXPECT_FALSE(Admits());
    EXPECT_TRUE(Admits(2));
    EXPECT_TRUE(Admits(1, RequestKind::Projects));
}

TEST_F(RateLimiterTest, KeepsCountsWhenItForgetsIdleRequesters) {
    for (int i = 0; i < 3; ++i)
        Admits(1);
    // Enough requesters to trigger the removal of idle ones.
    for (int session = 100; session < 5000; ++session)
        Admits(session);
    EXPECT_FALSE(Admits(1));
    now += 10s;
    EXPECT_TRUE(Admits(1));
}

TEST(RequestCountTest, CountsAnIpv6NetworkAsOneRequester) {
    auto requester = [](char const* address) {
        auto exchange = std::make_shared<http::Exchange>();
        exchange->request.remoteAddress = address;
        return RequesterAt(Call(exchange));
    };
    EXPECT_EQ(requester("2001:db8::1"), requester("2001:db8:0:0:ffff::2"));
    EXPECT_NE(requester("2001:db8::1"), requester("2001:db8:0:1::1"));
    EXPECT_EQ(requester("fe80::1%eth0"), requester("fe80::2%eth0"));
    EXPECT_NE(requester("192.0.2.1"), requester("192.0.2.2"));
}

}  // namespace
}  // namespace quilloservice
