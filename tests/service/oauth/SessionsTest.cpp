#include "service/oauth/Sessions.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

#include "service/store/SampleData.h"
#include "service/store/Store.h"
#include "tests/service/TempDirectory.h"
#include "tests/service/TestStore.h"

namespace quilloservice {
namespace {

class SessionsTest : public testing::Test {
protected:
    bool Signed(std::string const& access) { return sessions.Find(access).has_value(); }

    TokenPair Exchange(TokenPair const& old) {
        return sessions.Refresh(old.refresh, editor).value();
    }

    test::TempDirectory directory;
    std::unique_ptr<Store> const engine = test::OpenStore(directory.GetPath());
    Store& store = *engine;
    ClientId const editor{"editor"};
    std::int64_t now = 1'000'000;
    Sessions sessions{store, [this] { return now; }};
    TokenPair pair = [this] {
        MakeSampleData(store, SampleSize::None);
        return sessions.SignIn(SampleUserId(), editor);
    }();
};

TEST_F(SessionsTest, AcceptsAccessTokensUntilTheyExpire) {
    ASSERT_TRUE(Signed(pair.access));
    EXPECT_EQ(sessions.Find(pair.access)->user, SampleUserId());
    EXPECT_FALSE(Signed(pair.refresh));
    EXPECT_FALSE(Signed(""));
    now += Sessions::kAccessSeconds - 1;
    EXPECT_TRUE(Signed(pair.access));
    now += 1;
    EXPECT_FALSE(Signed(pair.access));
}

TEST_F(SessionsTest, AllowsARepeatedRefreshForAMinute) {
    TokenPair lost = Exchange(pair);
    now += Sessions::kRefreshGraceSeconds / 2;
    TokenPair lostToo = Exchange(pair);
    now += Sessions::kRefreshGraceSeconds / 2 - 1;
    TokenPair got = Exchange(pair);
    EXPECT_FALSE(Signed(lost.access) || Signed(lostToo.access)) << "only the last pair is valid";
    EXPECT_TRUE(Signed(got.access));
    EXPECT_EQ(sessions.Find(got.access)->session, sessions.Find(pair.access)->session);
    now += Sessions::kRefreshSeconds - 1;
    TokenPair next = Exchange(got);
    now += Sessions::kRefreshSeconds;
    EXPECT_FALSE(sessions.Refresh(next.refresh, editor));
}

TEST_F(SessionsTest, EndsTheSessionIfARefreshTokenIsReused) {
    struct Row {
        char const* what;
        std::function<std::string(TokenPair const& first, TokenPair const& second)> again;
    };
    for (Row const &row : std::vector<Row>{
             {"after the grace period",
              [&](auto&first, auto&) {
                  now += Sessions::kRefreshGraceSeconds;
                  return first.refresh;
              }},
             {"the new access token was used",
              [&](auto&first, auto&second) {
                  EXPECT_TRUE(Signed(second.access));
                  return first.refresh;
              }},
             {"the new refresh token was used",
              [&](auto&first, auto&second) {
                  Exchange(second);
                  return first.refresh;
              }},
             {"its pair was revoked by a repeated refresh",
              [&](auto&first, auto&second) {
                  Exchange(first);
                  return second.refresh;
              }},
         }) {
        SCOPED_TRACE(row.what);
        TokenPair first = sessions.SignIn(SampleUserId(), editor);
        TokenPair second = Exchange(first);
        std::string again = row.again(first, second);
        ASSERT_TRUE(Signed(first.access));
        EXPECT_FALSE(sessions.Refresh(again, editor));
        EXPECT_FALSE(Signed(first.access) || Signed(second.access));
        EXPECT_FALSE(sessions.Refresh(second.refresh, editor));
        EXPECT_TRUE(Signed(pair.access)) << "another session goes on";
    }
}

TEST_F(SessionsTest, RefusesARefreshByAnotherClientOrWithAnAccessToken) {
    EXPECT_FALSE(sessions.Refresh(pair.refresh, ClientId("another")));
    EXPECT_FALSE(sessions.Refresh(pair.access, editor));
    EXPECT_TRUE(sessions.Refresh(pair.refresh, editor));
}

TEST_F(SessionsTest, RevokingEitherTokenEndsTheSession) {
    TokenPair other = sessions.SignIn(SampleUserId(), editor);
    auto renewed = sessions.Refresh(pair.refresh, editor);
    sessions.Revoke(renewed->refresh);
    EXPECT_FALSE(Signed(pair.access));
    EXPECT_FALSE(Signed(renewed->access));
    EXPECT_FALSE(sessions.Refresh(renewed->refresh, editor));
    EXPECT_TRUE(Signed(other.access));
    sessions.Revoke(other.access);
    sessions.Revoke("unknown");
    EXPECT_FALSE(sessions.Refresh(other.refresh, editor));
}

TEST_F(SessionsTest, StoresNoTokenInPlainText) {
    for (auto const& entry : std::filesystem::directory_iterator(directory.GetPath())) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::string content{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(content.find(pair.access), std::string::npos) << entry.path();
        EXPECT_EQ(content.find(pair.refresh), std::string::npos) << entry.path();
    }
}

}  // namespace
}  // namespace quilloservice
