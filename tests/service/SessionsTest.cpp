#include "service/Sessions.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "service/SampleData.h"
#include "service/Store.h"
#include "tests/service/TempDirectory.h"

namespace quilloservice {
namespace {

class SessionsTest : public testing::Test {
protected:
    bool Signed(const std::string& access) { return sessions.Find(access).has_value(); }

    test::TempDirectory directory;
    Store store{directory.path() + "/store.sqlite"};
    std::int64_t now = 1'000'000;
    Sessions sessions{store, [this] { return now; }};
    TokenPair pair = [this] {
        MakeSampleData(store, SampleSize::None);
        return sessions.SignIn(SampleUserId(), "editor");
    }();
};

TEST_F(SessionsTest, TakesAccessTokensUntilTheyExpire) {
    ASSERT_TRUE(Signed(pair.access));
    EXPECT_EQ(sessions.Find(pair.access)->user, SampleUserId());
    EXPECT_FALSE(Signed(pair.refresh));
    EXPECT_FALSE(Signed(""));
    now += Sessions::kAccessSeconds - 1;
    EXPECT_TRUE(Signed(pair.access));
    now += 1;
    EXPECT_FALSE(Signed(pair.access));
}

TEST_F(SessionsTest, RefreshesAndForgivesALostAnswerForAMinute) {
    auto second = sessions.Refresh(pair.refresh, "editor");
    ASSERT_TRUE(second);
    EXPECT_TRUE(Signed(second->access));
    EXPECT_EQ(sessions.Find(second->access)->session, sessions.Find(pair.access)->session);
    now += Sessions::kRefreshGraceSeconds - 1;
    auto repeated = sessions.Refresh(pair.refresh, "editor");
    ASSERT_TRUE(repeated);
    EXPECT_TRUE(Signed(repeated->access));
    now += 1;
    EXPECT_FALSE(sessions.Refresh(pair.refresh, "editor")) << "the minute must not begin again";
    EXPECT_TRUE(sessions.Refresh(second->refresh, "editor"));
    now += Sessions::kRefreshSeconds;
    EXPECT_FALSE(sessions.Refresh(repeated->refresh, "editor"));
}

TEST_F(SessionsTest, RefreshesForTheSameClientOnlyAndNotWithAnAccessToken) {
    EXPECT_FALSE(sessions.Refresh(pair.refresh, "another"));
    EXPECT_FALSE(sessions.Refresh(pair.access, "editor"));
    EXPECT_TRUE(sessions.Refresh(pair.refresh, "editor"));
}

TEST_F(SessionsTest, EndsTheWholeSessionWithEitherToken) {
    TokenPair other = sessions.SignIn(SampleUserId(), "editor");
    auto renewed = sessions.Refresh(pair.refresh, "editor");
    sessions.Revoke(renewed->refresh);
    EXPECT_FALSE(Signed(pair.access));
    EXPECT_FALSE(Signed(renewed->access));
    EXPECT_FALSE(sessions.Refresh(renewed->refresh, "editor"));
    EXPECT_TRUE(Signed(other.access));
    sessions.Revoke(other.access);
    sessions.Revoke("unknown");
    EXPECT_FALSE(sessions.Refresh(other.refresh, "editor"));
}

TEST_F(SessionsTest, KeepsNoTokenInItsFiles) {
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::string content{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(content.find(pair.access), std::string::npos) << entry.path();
        EXPECT_EQ(content.find(pair.refresh), std::string::npos) << entry.path();
    }
}

}  // namespace
}  // namespace quilloservice
