#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <list>

#include "service/base/Uuid.h"
#include "service/oauth/Sessions.h"
#include "service/routes/EventStreams.h"
#include "service/store/ChangeFeed.h"
#include "service/store/Nodes.h"
#include "service/store/SampleData.h"
#include "service/store/Store.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RawConnection.h"
#include "tests/service/RunningService.h"
#include "tests/service/TestStore.h"

namespace quilloservice {
namespace {

using nlohmann::json;
using test::ApiClient;
using test::RawConnection;
using test::RunningService;
using test::TempDirectory;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct Event {
    std::string id;
    std::string name;
    json data;
};

AccountId AccountNamed(std::string const& name) {
    return AccountId(UuidOf("account/" + name));
}

/// A client of the event stream.
class Follower {
public:
    Follower(int port, std::string const& token, std::string const& lastEventId = {})
        : connection(port) {
        connection.Send("GET /v1/events HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: Bearer " +
                        token + "\r\n" +
                        (lastEventId.empty() ? "" : "Last-Event-ID: " + lastEventId + "\r\n") +
                        "\r\n");
        head = connection.ReadTo("\r\n\r\n");
    }

    /// The next event; an empty one at the end of the stream.
    Event Next() {
        for (;;) {
            std::istringstream lines(connection.ReadTo("\n\n"));
            Event event;
            for (std::string line; std::getline(lines, line);) {
                if (line.starts_with("id: ")) event.id = line.substr(4);
                if (line.starts_with("event: ")) event.name = line.substr(7);
                if (line.starts_with("data: ")) event.data = json::parse(line.substr(6));
            }
            if (!event.name.empty() || lines.str().empty()) return event;
        }
    }

    /// The next changes, each as "LIST PARENT".
    std::vector<std::string> Changes(std::size_t count) {
        std::vector<std::string> changes;
        while (changes.size() < count) {
            Event event = Next();
            if (event.name != "changed") return {"not a change: " + event.name};
            changes.push_back(event.data["list"].get<std::string>() + " " +
                              event.data.value("of", ""));
        }
        return changes;
    }

    std::string head;

private:
    RawConnection connection;
};

class EventsTest : public testing::Test {
protected:
    std::string AddFolder(std::string const& parent) {
        return client.Post("/v1/folders/" + parent + "/children", {{"name", "F"}})["asset"]["id"];
    }

    RunningService service;
    ApiClient client{service.GetPort()};
};

TEST_F(EventsTest, NameTheChangedList) {
    Follower follower(service.GetPort(), client.token);
    EXPECT_THAT(follower.head, StartsWith("HTTP/1.1 200"));
    EXPECT_THAT(follower.head, HasSubstr("Content-Type: text/event-stream"));
    EXPECT_EQ(follower.Next().name, "ready");

    std::string account = client.Post("/v1/accounts", {{"name", "A"}})["account"]["id"];
    std::string workspace =
        client.Post("/v1/accounts/" + account + "/workspaces", {{"name", "W"}})["workspace"]["id"];
    json project =
        client.Post("/v1/workspaces/" + workspace + "/projects", {{"name", "P"}})["project"];
    std::string root = project["root_folder"]["id"];
    std::string folder = AddFolder(root);
    client.Send("PATCH", "/v1/folders/" + folder, {}, R"({"name":"G"})");
    client.Send("DELETE", "/v1/folders/" + folder);
    client.Send("PATCH", "/v1/folders/" + folder, {}, R"({"name":"gone"})");
    client.Send("DELETE", "/v1/projects/" + project["id"].get<std::string>());
    client.Send("DELETE", "/v1/workspaces/" + workspace);
    // Before the account is deleted, and with it the user's right to see what changed in it.
    EXPECT_THAT(follower.Changes(8),
                ElementsAre("accounts ", "workspaces " + account, "projects " + workspace,
                            "assets " + root, "assets " + root, "assets " + root,
                            "projects " + workspace, "workspaces " + account));
    client.Send("DELETE", "/v1/accounts/" + account);
    EXPECT_THAT(follower.Changes(1), ElementsAre("accounts "));
}

TEST_F(EventsTest, ReportTheFoldersOfAPublishedMovie) {
    Follower follower(service.GetPort(), client.token);
    follower.Next();
    std::string stack = "5ca1ab1e-0000-4000-8000-000000000001";
    std::string first = client.folder;
    client.Upload("one", "movie.mp4", stack);
    client.Upload("alone");
    client.folder = AddFolder(first);
    client.Upload("two", "movie.mp4", stack);
    EXPECT_THAT(follower.Changes(5),
                ElementsAre("assets " + first, "assets " + first, "assets " + first,
                            "assets " + first, "assets " + client.folder));
}

TEST_F(EventsTest, ResumeAfterTheLastEvent) {
    std::string id;
    {
        Follower follower(service.GetPort(), client.token);
        id = follower.Next().id;
    }
    std::string first = AddFolder(client.folder);
    service.Restart();
    ApiClient again(service.GetPort());
    again.Post("/v1/folders/" + first + "/children", {{"name", "F"}});
    {
        Follower back(service.GetPort(), again.token, id);
        Event ready = back.Next();
        EXPECT_EQ(ready.name, "ready");
        EXPECT_EQ(ready.id, id);
        Event change = back.Next();
        EXPECT_EQ(change.data["of"], client.folder);
        id = change.id;
        EXPECT_THAT(back.Changes(1), ElementsAre("assets " + first));
    }
    Follower third(service.GetPort(), again.token, id);
    third.Next();
    EXPECT_THAT(third.Changes(1), ElementsAre("assets " + first));
}

TEST_F(EventsTest, ResetForAnUnknownLastEvent) {
    for (char const* id : {"0", "7", "9000000000000000000", "-1", "x", "99999999999999999999"}) {
        Follower follower(service.GetPort(), client.token, id);
        Event reset = follower.Next();
        EXPECT_EQ(reset.name, "reset") << id;
        AddFolder(client.folder);
        EXPECT_EQ(std::stoll(follower.Next().id), std::stoll(reset.id) + 1) << id;
    }
}

TEST_F(EventsTest, LimitTheNumberOfStreams) {
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = std::min<rlim_t>(files.rlim_max, 4096);
    ::setrlimit(RLIMIT_NOFILE, &files);
    service.Restart();  // with the new limit

    std::list<Follower> followers;
    auto follow = [&](std::string const& token) {
        followers.emplace_back(service.GetPort(), token);
        return followers.back().head;
    };
    while (followers.size() < EventStreams::kMaxStreams) {
        ApiClient session(service.GetPort());
        for (std::size_t i = 0; i < EventStreams::kMaxStreamsPerSession; ++i)
            ASSERT_THAT(follow(session.token), StartsWith("HTTP/1.1 200")) << followers.size();
        if (followers.size() > EventStreams::kMaxStreamsPerSession) continue;
        EXPECT_THAT(follow(session.token), StartsWith("HTTP/1.1 429"));
        followers.pop_back();
    }
    EXPECT_THAT(follow(client.token), StartsWith("HTTP/1.1 503"));
    EXPECT_THAT(followers.back().head, HasSubstr("Retry-After: "));
    followers.pop_back();

    ApiClient(service.GetPort()).Upload("a movie");
    for (Follower& follower : followers) {
        follower.Next();
        EXPECT_THAT(follower.Changes(1), ElementsAre("assets " + client.folder));
    }
    followers.pop_front();
    while (!Follower(service.GetPort(), client.token).head.starts_with("HTTP/1.1 200")) {
    }
}

TEST_F(EventsTest, EndWithTheService) {
    Follower follower(service.GetPort(), client.token);
    follower.Next();
    service.Restart();
    EXPECT_EQ(follower.Next().name, "");
}

/// The streams without a server; the test holds the client's end of a socket pair.
class EventStreamsTest : public testing::Test {
protected:
    EventStreamsTest() {
        MakeSampleData(store, SampleSize::Small);
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
    }
    ~EventStreamsTest() override { ::close(ends[0]); }

    /// Reads up to and including `end`, or to the end of the stream.
    std::string ReadTo(std::string_view end) {
        std::string text;
        char byte = 0;
        while (!text.ends_with(end) && ::recv(ends[0], &byte, 1, 0) > 0)
            text += byte;
        return text;
    }

    TempDirectory directory;
    std::unique_ptr<Store> const engine = test::OpenStore(directory.GetPath());
    Store& store = *engine;
    Sessions sessions{store, [] { return std::int64_t{1'000}; }};
    ChangeFeed changes{store};
    EventStreams streams{changes, sessions, std::chrono::milliseconds(2)};
    int ends[2];
};

TEST_F(EventStreamsTest, CoverTheUsersAccountsAndEndWithTheToken) {
    UserId user(UuidOf("user/other"));
    std::string token = sessions.SignIn(user, ClientId("test")).access;
    EventStreams::Follower follower = streams.MakeFollower(user, token, std::nullopt);
    // Changes between MakeFollower and Take must be in the stream.
    store.Write([](Database& database) {
        for (char const* name : {"Northlight Pictures", "Somebody Else's Account"})
            ChangeFeed::RecordChildren(database, *FindNode(database, AccountNamed(name)));
    });
    changes.Announce();
    streams.Take(ends[1], follower, streams.Reserve(SessionId(1)));
    EXPECT_THAT(ReadTo("\n\n"), HasSubstr("ready"));
    EXPECT_THAT(ReadTo(AccountNamed("Somebody Else's Account").GetText() + "\"}\n\n"),
                testing::Not(HasSubstr(AccountNamed("Northlight Pictures").GetText())));
    EXPECT_THAT(ReadTo("\n\n"), StartsWith(":")) << "a heartbeat";
    sessions.Revoke(token);
    EXPECT_THAT(ReadTo("no end"), testing::Not(HasSubstr("changed")));
}

TEST_F(EventStreamsTest, CatchUpInBatchesWithinTheKeptChanges) {
    UserId user = SampleUserId();
    auto before = static_cast<std::int64_t>(changes.Position());
    store.Write([](Database& database) {
        Node account = *FindNode(database, AccountNamed("Northlight Pictures"));
        for (int i = 0; i < 10'100; ++i)
            ChangeFeed::RecordChildren(database, account);
    });
    for (auto [distance, reached] :
         {std::pair(0, false), {99, false}, {100, true}, {10'100, true}, {10'101, false}})
        EXPECT_EQ(changes.Reaches(ChangeNumber(before + distance)), reached) << distance;
    streams.Take(ends[1],
                 streams.MakeFollower(user, sessions.SignIn(user, ClientId("test")).access,
                                      ChangeNumber(before + 9'000)),
                 streams.Reserve(SessionId(1)));
    std::string all = ReadTo("id: " + std::to_string(before + 10'100) + "\n");
    EXPECT_THAT(all, HasSubstr("id: " + std::to_string(before + 9'001) + "\n"));
    EXPECT_EQ(std::count(all.begin(), all.end(), '{'), 1'100);
}

}  // namespace
}  // namespace quilloservice
