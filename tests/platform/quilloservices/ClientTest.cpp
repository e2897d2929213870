#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/platform/quilloservices/ClientFixture.h"

namespace {

using namespace quillosdk;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

std::string const kUser = std::string(R"({"user":{"id":")") + kID + R"(","name":"A"}})";
std::string const kLink =
    std::string(R"({"review_link":{"id":")") + kID + R"(","name":"L","url":"http://l"}})";

using ClientTest = ClientFixture;

TEST_F(ClientTest, ARejectedTokenIsReplacedAndTheRequestSentOnceMore) {
    std::vector<std::string> rejected;
    QuilloClient::SetTokenRejectedHandler([&](std::string const& t) { rejected.push_back(t); });
    auto const first = client->GetAccounts().GetCurrentUser({});
    auto const second = client->GetAccounts().GetCurrentUserAccountList({});
    transport.Answer(0, 401);
    transport.Answer(1, 401);
    EXPECT_THAT(rejected, ElementsAre("the-first-token-1"));
    EXPECT_THAT(refreshes, ElementsAre("the-first-token-1")) << "both wait for the one renewal";

    EXPECT_TRUE(client->UpdateAccessToken("the-first-token-1").IsSuccess());
    EXPECT_EQ(transport.Count(), 2u) << "the rejected one does not help";
    EXPECT_TRUE(client->UpdateAccessToken("the-second-token-2").IsSuccess());
    ASSERT_EQ(transport.Count(), 4u);
    EXPECT_EQ(transport.LineAt(2), "GET /v1/me");
    EXPECT_EQ(transport.HeaderAt(2, "Authorization"), "Bearer the-second-token-2");
    transport.Answer(2, 200, kUser);
    EXPECT_TRUE(first.Get()->IsSuccessful());

    transport.Answer(3, 401);
    EXPECT_EQ(transport.Count(), 4u) << "once, not for ever";
    EXPECT_EQ(second.Get()->GetHTTPStatusCode(), 401);
    EXPECT_EQ(NewFailures().size(), 1u);
    executor.AdvanceBy(1min);
    QuilloClient::SetTokenRejectedHandler({});
}

TEST_F(ClientTest, ARejectionIsTheAnswerWhenNoOtherTokenComesInTime) {
    auto const user = client->GetAccounts().GetCurrentUser({});
    transport.Answer(0, 401,
                     R"({"error":{"code":"unauthorized","message":"the%2Dfirst-token-1 is old"}})");
    executor.AdvanceBy(9s);
    EXPECT_FALSE(user.IsComplete());
    executor.AdvanceBy(1s);
    EXPECT_EQ(user.Get()->GetHTTPStatusCode(), 401);
    EXPECT_THAT(NewFailures().at(0).message, HasSubstr("(... is old); sign in again"));

    auto const next = client->GetAccounts().GetCurrentUser({});
    transport.Answer(1, 401);
    EXPECT_EQ(refreshes.size(), 2u) << "each rejection asks anew";
}

TEST_F(ClientTest, TokensThatCouldNotStandInAHeaderAreRefused) {
    for (char const* token : {"", "fifteen-letters", "a blank in between", "another-line-\r\nX: y",
                              "caf\xC3\xA9-caf\xC3\xA9-caf\xC3\xA9"}) {
        EXPECT_FALSE(client->UpdateAccessToken(token).IsSuccess()) << token;
    }
    static_cast<void>(client->GetAccounts().GetCurrentUser({}));
    EXPECT_EQ(transport.HeaderAt(0, "Authorization"), "Bearer the-first-token-1");
}

TEST_F(ClientTest, OneCreationOfALinkIsOneToTheServiceHoweverItsAnswersGetLost) {
    constexpr char kKey[] = "Idempotency-Key";
    auto& links = client->GetReviewLinks();
    auto const lost = links.CreateReviewLink({kGuid, "L"});
    for (std::size_t i = 0; i < transport.Count(); ++i) {
        transport.Fail(i, kConnectionLost);
        executor.AdvanceBy(1min);
    }
    ASSERT_TRUE(lost.GetException());
    auto const key = transport.HeaderAt(0, kKey);
    EXPECT_FALSE(quillocommon::Guid(key).IsNull());
    EXPECT_EQ(transport.HeaderAt(transport.Count() - 1, kKey), key);

    auto const other = transport.Count();
    static_cast<void>(links.CreateReviewLink({kGuid, "Another"}));
    EXPECT_NE(transport.HeaderAt(other, kKey), key);

    auto const again = links.CreateReviewLink({kGuid, "L"});
    EXPECT_EQ(transport.HeaderAt(other + 1, kKey), key) << "still the creation that got lost";
    EXPECT_EQ(*transport.At(other + 1).body, R"({"name":"L"})");
    static_cast<void>(links.CreateReviewLink({kGuid, "L"}));
    EXPECT_NE(transport.HeaderAt(other + 2, kKey), key) << "the other one has taken it over";
    transport.Answer(other + 1, 200, kLink);
    EXPECT_EQ(again.Get()->GetReviewLinkObject().url, "http://l");

    struct Row {
        int status;
        std::string body;
        bool sameKey;  // for the next creation
    };
    Row const rows[] = {{201, kLink, false},
                        {404, "", false},
                        {201, R"({"review_link":{"id":")" + std::string(kID) + R"("}})", true},
                        {201, "{", true}};
    for (auto const& row : rows) {
        SCOPED_TRACE(row.body);
        std::string const name = "row " + row.body;
        auto const at = transport.Count();
        static_cast<void>(links.CreateReviewLink({kGuid, name}));
        transport.Answer(at, row.status, row.body);
        static_cast<void>(links.CreateReviewLink({kGuid, name}));
        EXPECT_EQ(transport.HeaderAt(at + 1, kKey) == transport.HeaderAt(at, kKey), row.sameKey);
    }
    EXPECT_EQ(NewFailures().size(), 1u + 3u) << "a link without an address is told, too";
}

TEST_F(ClientTest, ALinkRequestThatIsNoUTF8IsSentReadably) {
    static_cast<void>(client->GetReviewLinks().CreateReviewLink({kGuid, "a\"\xFF"}));
    EXPECT_EQ(*transport.At(0).body, "{\"name\":\"a\\\"\xEF\xBF\xBD\"}");
    static_cast<void>(client->GetReviewLinks().AddAssetsToReviewLink({kGuid, {kGuid, kGuid}}));
    EXPECT_EQ(*transport.At(1).body,
              R"({"asset_ids":[")" + std::string(kID) + R"(",")" + kID + R"("]})");
}

TEST_F(ClientTest, AClientMayBeDroppedWhileItsRequestsAreUnderWay) {
    auto const user = client->GetAccounts().GetCurrentUser({});
    client.reset();
    transport.Fail(0, kNoConnection);
    executor.AdvanceBy(1s);
    std::thread([&] { transport.Answer(1, 200, kUser); }).join();
    EXPECT_EQ(user.Get()->GetUserObject().name, "A");
}

}  // namespace
