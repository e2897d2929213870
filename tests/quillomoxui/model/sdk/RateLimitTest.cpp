#include "quillomoxui/model/sdk/RateLimit.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace quillomoxui::model {
namespace {

using namespace std::chrono_literals;

TEST(RateLimitTest, TakesTheNumbersThatStoiTakes) {
    constexpr int kMost = std::numeric_limits<int>::max();
    struct {
        char const* limit;
        char const* window;
        int expectedLimit;  // 0: none
        std::chrono::seconds expectedWindow{0};
    } const cases[] = {
        {"4", "1000", 4, 1s},
        {" 4", "\t2000", 4, 2s},
        {"+4", "+1000", 4, 1s},
        {"4abc", "1000 ms", 4, 1s},
        {"4.9", "1999", 4, 1s},
        {"1", "60000", 1, 60s},
        {"0", "1000", 0},
        {"4", "999", 0},
        {" -4", "1000", 0},
        {"99999999999", "1000", kMost, 1s},
        {" +99999999999", "1000", kMost, 1s},
        {" -99999999999", "1000", 0},
        {"4", "99999999999", 4, std::chrono::seconds(kMost / 1000)},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(testing::Message() << '"' << one.limit << "\", \"" << one.window << '"');
        auto const found =
            ReadRateLimit({{"X-RATELIMIT-LIMIT", one.limit}, {"X-RATELIMIT-WINDOW", one.window}});
        EXPECT_EQ(found ? found->limit : 0, one.expectedLimit);
        EXPECT_EQ(found ? found->window : 0s, one.expectedWindow);
    }
    for (auto const* const none : {"", "abc", "-", "+-4"}) {
        SCOPED_TRACE(none);
        EXPECT_THROW(static_cast<void>(ReadRateLimit(
                         {{"X-RATELIMIT-LIMIT", none}, {"X-RATELIMIT-WINDOW", "1000"}})),
                     std::invalid_argument);
    }
}

}  // namespace
}  // namespace quillomoxui::model
