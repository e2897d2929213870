#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <thread>

#include "quilloauth/AuthManager.h"
#include "quilloclient/ServiceDatastore.h"
#include "tests/platform/quilloservices/DatastoreFixture.h"

namespace {

using namespace std::chrono_literals;
using moxcore::utility::Guid;
using quillo::QuilloDatastore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::Files;
using testsupport::Id;
using testsupport::Record;
using DatastoreTest = testsupport::DatastoreFixture;

TEST_F(DatastoreTest, AListIsReadOnceAndAnnouncedWhenItIsAnother) {
    auto const parent = Guid(Id(9));
    auto const size = [&](auto const& future) { return Complete(future).Get()->GetCount(); };
    std::string const root = R"(,"root_folder":)" + Record(30, "r", R"(,"type":"folder")");
    struct {
        std::string line, list, key, more, type;
        std::function<std::size_t()> count;
        Guid subject;
    } const cases[] = {
        {"GET /v1/accounts", "accounts", "accounts", "",
         QuilloDatastore::AccountListChanged::kTypeName,
         [&] { return size(datastore->GetAccountList()); }, Guid()},
        {"GET /v1/accounts/" + Id(9) + "/workspaces", "workspaces", "workspaces", "",
         QuilloDatastore::TeamListChanged::kTypeName,
         [&] { return size(datastore->GetTeamList(parent)); }, parent},
        {"GET /v1/workspaces/" + Id(9) + "/projects", "projects", "projects", root,
         QuilloDatastore::ProjectListChanged::kTypeName,
         [&] { return size(datastore->GetProjectList(parent)); }, parent},
        {FolderLine(9), "assets", "assets", R"(,"type":"x")",
         QuilloDatastore::AssetListChanged::kTypeName,
         [&] { return size(datastore->GetAssetList(parent)); }, parent},
    };
    Follow();
    for (auto const& one : cases) {
        SCOPED_TRACE(one.line);
        log.messages.clear();
        std::string const changed = R"({"list":")" + one.list + R"(","of":")" +
                                    (one.subject.IsNull() ? "" : Id(9)) + R"("})";
        Say("changed", changed, 8);
        EXPECT_THAT(Requests(one.line), IsEmpty()) << "nobody has asked for it";

        On(one.line, "{\"" + one.key + "\":[" + Record(3, "a", one.more) + "]}");
        EXPECT_EQ(one.count(), 1u);
        EXPECT_EQ(one.count(), 1u);
        EXPECT_THAT(Requests(one.line), SizeIs(1));
        Say("changed", changed, 9);
        EXPECT_THAT(Requests(one.line), SizeIs(2));
        EXPECT_THAT(log.messages, IsEmpty()) << "it is what it was";

        On(one.line, "{\"" + one.key + "\":[" + Record(3, "b", one.more) + "," +
                         Record(4, "c", one.more) + "]}");
        Say("changed", changed, 10);
        ASSERT_THAT(log.messages, SizeIs(1));
        EXPECT_EQ(log.messages[0].GetGuid(), one.subject);
        EXPECT_EQ(log.messages[0].GetTypeID(),
                  moxcore::messaging::HashMessageTypeNameToMessageID(one.type));
        EXPECT_EQ(one.count(), 2u);
        EXPECT_THAT(Requests(one.line), SizeIs(3));
    }
    EXPECT_THAT(failures.All(), IsEmpty());
}

TEST_F(DatastoreTest, TheLineIsShortAndWhoeverWaitsGoesFirst) {
    Follow();
    for (int folder = 10; folder < 30; ++folder)
        On(FolderLine(folder), Files({"a"}));
    for (int folder = 10; folder < 30; ++folder)
        Names(folder);
    for (int folder = 10; folder < 30; ++folder)
        Ignore(FolderLine(folder));
    auto const before = transport.Count();
    Say("reset", "{}", 9);
    EXPECT_EQ(transport.Count(), before + 8);
    auto const asked = datastore->GetAssetList(Guid(Id(29)));
    executor.RunDue();
    transport.Answer(before, 200, Files({"a"}));
    executor.RunDue();
    EXPECT_EQ(transport.LineAt(before + 8), FolderLine(29));
    EXPECT_FALSE(asked.IsComplete()) << "it may have changed";
}

TEST_F(DatastoreTest, TooManyRequestsPauseTheWholeLine) {
    Follow();
    On(FolderLine(5), "", 429, {{"RETRY-AFTER", "30"}});
    On(FolderLine(6), Files({"b"}));
    auto const first = datastore->GetAssetList(Guid(Id(5)));
    executor.RunDue();
    auto const second = datastore->GetAssetList(Guid(Id(6)));
    executor.AdvanceBy(29'999ms);
    EXPECT_THAT(Requests(FolderLine(6)), IsEmpty());
    executor.AdvanceBy(1ms);
    EXPECT_TRUE(second.IsComplete());
    executor.AdvanceBy(10min);  // far longer than other refusals are put up with
    EXPECT_FALSE(first.IsComplete());
    EXPECT_THAT(Requests(FolderLine(5)), SizeIs(22));
    On(FolderLine(5), Files({"a"}));
    executor.AdvanceBy(30s);
    EXPECT_TRUE(first.IsComplete());
    EXPECT_THAT(failures.All(), IsEmpty());
}

TEST_F(DatastoreTest, AReadingThatFailsIsToldToThoseWhoWait) {
    Follow();
    struct {
        int status;
        std::string body;
        std::size_t requests;
        std::int32_t result;
    } const cases[] = {{404, "", 1, quillosdk::kRefused},
                       {403, "", 1, quillosdk::kRefused},
                       {500, "", 8, quillosdk::kRefused},
                       {200, "{", 1, quillosdk::kMalformedAnswer}};
    int folder = 20;
    for (auto const& one : cases) {
        SCOPED_TRACE(one.status);
        On(FolderLine(++folder), one.body, one.status);
        auto const failed = datastore->GetAssetList(Guid(Id(folder)));
        executor.AdvanceBy(10min);
        EXPECT_EQ(ResultOf(failed), one.result);
        EXPECT_THAT(Requests(FolderLine(folder)), SizeIs(one.requests));
        EXPECT_EQ(failures.All().back().httpStatus, one.status);
        EXPECT_EQ(failures.All().back().step, quillocommon::Step::ReadLocations);
        On(FolderLine(folder), Files({"a"}));
        EXPECT_THAT(Names(folder), ElementsAre("a"));
    }
    EXPECT_THAT(failures.All(), SizeIs(4));
}

TEST_F(DatastoreTest, AChangeThatCannotBeReadIsReadLater) {
    Follow();
    On(FolderLine(5), Files({"a"}));
    Names(5);
    On(FolderLine(5), "", 500);
    SayChanged(5);
    executor.AdvanceBy(10min);
    On(FolderLine(5), Files({"b"}));
    executor.AdvanceBy(1min);
    EXPECT_THAT(log.messages, SizeIs(1));
    EXPECT_THAT(failures.All(), IsEmpty()) << "nobody waits for it";
}

TEST_F(DatastoreTest, WithoutASignInEverythingFailsUntilThereIsOne) {
    EXPECT_EQ(ResultOf(datastore->GetAccountList()), quilloauth::jwt::kNotSignedIn);
    EXPECT_EQ(transport.Count(), 0u);
    On("POST /oauth/token", R"({"error":"unauthorized_client"})", 400);
    auto const user = datastore->GetCurrentUser();
    auto const accounts = datastore->GetAccountList();
    EXPECT_LT(ResultOf(user), 0);
    EXPECT_LT(ResultOf(accounts), 0);
    EXPECT_THAT(Requests("GET"), IsEmpty());
    EXPECT_EQ(failures.All().at(0).step, quillocommon::Step::SignIn);

    GrantTokens();
    auto const later = datastore->GetCurrentUser();
    EXPECT_EQ(Complete(later).Get()->GetName(), "Jane");
    EXPECT_EQ(later.Get()->GetID().AsStdString(), Id(1));
    EXPECT_EQ(Complete(datastore->GetAccountList()).Get()->GetAccount(0)->GetName(), "Studio");
}

TEST_F(DatastoreTest, AKeptSessionThatIsOverIsReplacedByASignIn) {
    Follow();  // with the first token
    Ignore("POST /oauth/token");
    Ignore("GET /v1/me");
    OnPath("/oauth/token", [](auto const& request) {
        if (request.body->find("refresh_token") != std::string::npos)
            return quillosdk::HttpResponse{400, {}, R"({"error":"invalid_grant"})"};
        return quillosdk::HttpResponse{
            200,
            {},
            R"({"access_token":"t2-of-the-datastore","expires_in":999999999,"refresh_token":"r2-of-the-datastore"})"};
    });
    OnPath("/v1/me", [](auto const& request) {
        bool const isFresh =
            testsupport::HeaderOf(request, "Authorization") == "Bearer t2-of-the-datastore";
        return isFresh ? quillosdk::HttpResponse{200, {}, R"({"user":)" + Record(1, "Jo") + "}"}
                       : quillosdk::HttpResponse{401};
    });
    auto const user = datastore->GetCurrentUser();
    while (!user.IsComplete()) {  // a request waits a while for another token
        executor.AdvanceBy(1s);
        std::this_thread::yield();
    }
    EXPECT_EQ(Complete(user).Get()->GetName(), "Jo");
}

TEST_F(DatastoreTest, ASignOutEndsWhatIsUnderWay) {
    Follow();
    On(FolderLine(5), Files({"a"}));
    Names(5);
    auto const asked = datastore->GetAssetList(Guid(Id(6)));
    executor.RunDue();
    datastore->SignOutJwt();
    datastore->SignOutOAuth2();
    EXPECT_EQ(ResultOf(asked), quilloauth::jwt::kNotSignedIn);
    EXPECT_EQ(ResultOf(datastore->GetAssetList(Guid(Id(5)))), quilloauth::jwt::kNotSignedIn);
    EXPECT_THAT(Requests("POST /oauth/revoke"), SizeIs(1));
    auto const before = transport.Count();
    On(FolderLine(5), Files({"b"}));
    SayChanged(5);
    transport.Answer(IndicesOf(FolderLine(6)).back(), 200, Files({"late"}));
    executor.AdvanceBy(10min);
    EXPECT_EQ(transport.Count(), before);
    EXPECT_THAT(log.messages, IsEmpty());

    Follow();
    EXPECT_THAT(Names(5), ElementsAre("b"));
}

TEST_F(DatastoreTest, ADatastoreThatGoesStopsFollowing) {
    Follow();
    auto const asked = datastore->GetAssetList(Guid(Id(6)));
    executor.RunDue();
    datastore = quillo::ServiceDatastore::Create();
    auto const before = transport.Count();
    transport.Answer(IndicesOf(FolderLine(6)).back(), 200, Files({"late"}));
    transport.Fail(IndicesOf("GET /v1/events").back(), quillosdk::kConnectionLost);
    executor.AdvanceBy(10min);
    EXPECT_EQ(transport.Count(), before);
    EXPECT_TRUE(asked.IsComplete());
}

}  // namespace
