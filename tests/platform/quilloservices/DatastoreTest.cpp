#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/messaging/Station.h"
#include "quilloauth/AuthManager.h"
#include "quilloclient/ServiceDatastore.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/FailureLog.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedService.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using moxcore::config::ExtractResultFromException;
using moxcore::messaging::Message;
using moxcore::utility::Guid;
using quillo::QuilloDatastore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::Id;
using testsupport::Record;

/// What lies in a folder: files with these names.
std::string Files(std::vector<std::string> const& names) {
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i)
        list +=
            (i > 0 ? "," : "") + Record(100 + static_cast<int>(i), names[i], R"(,"type":"file")");
    return R"({"assets":[)" + list + "]}";
}

class MessageLog final : public moxcore::messaging::Listener {
public:
    explicit MessageLog(QuilloDatastore& datastore) : station(datastore.GetStationID()) {
        AddRawListener(station, this);
    }
    ~MessageLog() override { RemoveRawListener(station, this); }

    void ListenToMessage(Message const& message) override { messages.push_back(message); }

    std::vector<Message> messages;

private:
    moxcore::utility::ImmutableString const station;
};

class DatastoreTest : public testing::Test, protected testsupport::ScriptedService {
protected:
    DatastoreTest() {
        moxcore::filesupport::commondirs::SetUserRoot(directory.Text());
        quillosdk::RetryPolicy::SetRandomSource([] { return 0.5; });
        GrantTokens();
        On("GET /v1/me", R"({"user":)" + Record(1, "Jane") + "}");
        On("GET /v1/accounts", R"({"accounts":[)" + Record(2, "Studio") + "]}");
        quilloauth::jwt::InitializeAuthManager("editor", "", {}, "");
    }

    ~DatastoreTest() override {
        datastore->SignOutJwt();
        datastore->SignOutOAuth2();
        executor.RunDue();
        quillosdk::RetryPolicy::SetRandomSource(nullptr);
    }

    template <class T>
    auto Complete(moxcore::async::Future<T> const& future) {
        executor.RunUntil([&] { return future.IsComplete(); });
        return future;
    }

    template <class T>
    std::int32_t ResultOf(moxcore::async::Future<T> const& future) {
        return ExtractResultFromException(Complete(future).GetException());
    }

    /// Signs in and has the service tell of changes, from number 7 on.
    void Follow() {
        datastore->SignIn();
        executor.RunUntil([&] { return !Requests("GET /v1/events").empty(); });
        Say("ready", "{}", 7);
    }

    /// The service says something on the connection made last.
    void Say(std::string const& event, std::string const& data, int id) {
        transport.SendBody(
            IndicesOf("GET /v1/events").back(),
            "id: " + std::to_string(id) + "\nevent: " + event + "\ndata: " + data + "\n\n");
        executor.RunDue();
    }

    void SayChanged(int folder) {
        Say("changed", R"({"list":"assets","of":")" + Id(folder) + R"("})", 8);
    }

    static std::string FolderLine(int folder) {
        return "GET /v1/folders/" + Id(folder) + "/children";
    }

    /// The names in a folder's list, which is there or on its way.
    std::vector<std::string> Names(int folder) {
        auto const list = Complete(datastore->GetAssetList(Guid(Id(folder)))).Get();
        std::vector<std::string> names;
        for (std::size_t i = 0; i < list->GetCount(); ++i)
            names.push_back(list->GetAsset(i)->GetName());
        EXPECT_FALSE(list->GetAsset(names.size()));
        return names;
    }

    testsupport::TemporaryDirectory directory;
    testsupport::ManualExecutor executor;
    testsupport::FailureLog failures;
    std::shared_ptr<QuilloDatastore> datastore = quillo::ServiceDatastore::Create();
    MessageLog log{*datastore};
};

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

TEST_F(DatastoreTest, AChangeDuringTheReadingHasItReadOnceMore) {
    Follow();
    auto const future = datastore->GetAssetList(Guid(Id(5)));
    executor.RunDue();
    SayChanged(5);
    SayChanged(5);
    transport.Answer(IndicesOf(FolderLine(5)).at(0), 200, Files({"old"}));
    executor.RunDue();
    ASSERT_THAT(Requests(FolderLine(5)), SizeIs(2));
    auto const list = future.Get();
    auto const entry = list->GetAsset(0);
    transport.Answer(IndicesOf(FolderLine(5)).at(1), 200, Files({"new"}));
    executor.RunDue();
    EXPECT_EQ(list->GetAsset(0)->GetName(), "new") << "a list that was handed out follows";
    EXPECT_EQ(entry->GetName(), "old") << "and its entries do not";
    EXPECT_THAT(log.messages, SizeIs(1));
}

TEST_F(DatastoreTest, WhatFloodsHasToWaitAndIsDoneOnce) {
    Follow();
    On(FolderLine(5), Files({"a"}));
    Names(5);
    auto const stream = IndicesOf("GET /v1/events").back();
    std::string const event =
        R"(event: changed
data: {"list":"assets","of":")" +
        Id(5) + "\"}\n\n";
    for (std::size_t readings = 2; readings < 4; ++readings) {
        std::size_t waiting = 0;
        while (transport.SendBody(stream, event))
            waiting += event.size();
        EXPECT_GT(waiting, 60'000u);
        EXPECT_LE(waiting, 64u * 1024);
        executor.RunDue();
        EXPECT_THAT(Requests(FolderLine(5)), SizeIs(readings)) << "however often it was said";
    }
}

TEST_F(DatastoreTest, AStreamThatNobodyWantsIsEndedAtOnce) {
    Follow();
    auto const stream = transport.FutureAt(IndicesOf("GET /v1/events").back());
    while (transport.SendBody(IndicesOf("GET /v1/events").back(), ": a comment\n")) {
    }
    datastore->SignOutOAuth2();
    executor.RunDue();
    EXPECT_THROW(static_cast<void>(stream.Get()), moxcore::async::CancelledException);
}

TEST_F(DatastoreTest, WhatWasReadBeforeTheFirstEventIsReadAgain) {
    On(FolderLine(5), Files({"a"}));
    datastore->SignIn();
    EXPECT_THAT(Names(5), ElementsAre("a"));
    Say("ready", "{}", 7);
    EXPECT_THAT(Requests(FolderLine(5)), SizeIs(2));
}

TEST_F(DatastoreTest, AConnectionThatIsLostGoesOnWhereItWas) {
    Follow();
    On(FolderLine(5), Files({"a"}));
    Names(5);
    SayChanged(5);
    auto const connections = [&] { return IndicesOf("GET /v1/events"); };
    transport.Fail(connections().back(), quillosdk::kConnectionLost);
    executor.RunDue();
    ASSERT_THAT(connections(), SizeIs(1));
    executor.AdvanceBy(250ms);  // half of the first bound
    ASSERT_THAT(connections(), SizeIs(2));
    EXPECT_EQ(transport.HeaderAt(connections()[1], "Last-Event-ID"), "8");
    EXPECT_EQ(transport.HeaderAt(connections()[1], "Authorization"), "Bearer t0ken-of-the-test");

    auto const readings = Requests(FolderLine(5)).size();
    Say("ready", "{}", 8);
    EXPECT_THAT(Requests(FolderLine(5)), SizeIs(readings)) << "nothing was missed";
    transport.Answer(connections()[1], 200);  // an end without an error; the next bound is longer
    executor.AdvanceBy(499ms);
    ASSERT_THAT(connections(), SizeIs(2));
    executor.AdvanceBy(1ms);
    ASSERT_THAT(connections(), SizeIs(3));
    On(FolderLine(5), Files({"b"}));
    Say("reset", "{}", 1000);
    EXPECT_THAT(log.messages, SizeIs(1)) << "nobody knows what was missed";
    executor.AdvanceBy(11s);
    transport.Answer(connections()[2], 503, "", {{"RETRY-AFTER", "3"}});
    executor.AdvanceBy(2999ms);
    EXPECT_THAT(connections(), SizeIs(3));
    executor.AdvanceBy(1ms);
    ASSERT_THAT(connections(), SizeIs(4));
    EXPECT_EQ(transport.HeaderAt(connections()[3], "Last-Event-ID"), "1000");
    EXPECT_THAT(failures.All(), IsEmpty());
}

TEST_F(DatastoreTest, AStreamThatIsNoneIsLeft) {
    Follow();
    auto const first = IndicesOf("GET /v1/events").back();
    transport.SendBody(first, std::string(100'000, 'x'));
    executor.RunDue();
    executor.AdvanceBy(1s);
    EXPECT_THAT(Requests("GET /v1/events"), SizeIs(2));
}

TEST_F(DatastoreTest, WithoutEventsListsAreReadAgainAFewAtATime) {
    On("GET /v1/events", "", 404);
    for (int folder = 10; folder < 16; ++folder)
        On(FolderLine(folder), Files({"a"}));
    datastore->SignIn();
    for (int folder = 10; folder < 16; ++folder)
        Names(folder);
    auto const readings = [&] { return Requests("GET /v1/folders").size(); };
    EXPECT_EQ(readings(), 6u);
    On(FolderLine(11), Files({"b"}));
    executor.AdvanceBy(10s);
    EXPECT_EQ(readings(), 10u);
    EXPECT_THAT(log.messages, SizeIs(1));
    On(FolderLine(15), Files({"b"}));
    executor.AdvanceBy(10s);
    EXPECT_EQ(readings(), 14u);
    EXPECT_THAT(log.messages, SizeIs(2)) << "those that were read longest ago come first";

    Ignore("GET /v1/events");
    executor.AdvanceBy(60s);  // it is asked for events now and then
    Say("ready", "{}", 7);
    auto const before = readings();
    executor.AdvanceBy(60s);
    EXPECT_EQ(readings(), before) << "events have taken over";
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
