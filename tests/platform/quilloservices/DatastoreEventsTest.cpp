#include <gmock/gmock.h>

#include <string>

#include "quilloauth/AuthManager.h"
#include "tests/platform/quilloservices/DatastoreFixture.h"

namespace {

using namespace std::chrono_literals;
using moxcore::utility::Guid;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::Files;
using testsupport::Id;
using DatastoreEventsTest = testsupport::DatastoreFixture;

TEST_F(DatastoreEventsTest, AChangeDuringTheReadingHasItReadOnceMore) {
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

TEST_F(DatastoreEventsTest, WhatFloodsHasToWaitAndIsDoneOnce) {
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

TEST_F(DatastoreEventsTest, AStreamThatNobodyWantsIsEndedAtOnce) {
    Follow();
    auto const stream = transport.FutureAt(IndicesOf("GET /v1/events").back());
    while (transport.SendBody(IndicesOf("GET /v1/events").back(), ": a comment\n")) {
    }
    datastore->SignOutOAuth2();
    executor.RunDue();
    EXPECT_THROW(static_cast<void>(stream.Get()), moxcore::async::CancelledException);
}

TEST_F(DatastoreEventsTest, WhatWasReadBeforeTheFirstEventIsReadAgain) {
    On(FolderLine(5), Files({"a"}));
    datastore->SignIn();
    EXPECT_THAT(Names(5), ElementsAre("a"));
    Say("ready", "{}", 7);
    EXPECT_THAT(Requests(FolderLine(5)), SizeIs(2));
}

TEST_F(DatastoreEventsTest, AConnectionThatIsLostGoesOnWhereItWas) {
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

TEST_F(DatastoreEventsTest, AStreamThatIsNoneIsLeft) {
    Follow();
    auto const first = IndicesOf("GET /v1/events").back();
    transport.SendBody(first, std::string(100'000, 'x'));
    executor.RunDue();
    executor.AdvanceBy(1s);
    EXPECT_THAT(Requests("GET /v1/events"), SizeIs(2));
}

TEST_F(DatastoreEventsTest, WithoutEventsListsAreReadAgainAFewAtATime) {
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

}  // namespace
