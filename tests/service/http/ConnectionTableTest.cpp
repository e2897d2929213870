#include "service/http/ConnectionTable.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

namespace quilloservice::http {
namespace {

using std::chrono::seconds;

/// Both ends of a connection.
struct Client {
    Client() { ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()); }
    ~Client() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;

    bool IsDropped() const {
        char byte = 0;
        return ::recv(ends[1], &byte, 1, 0) == 0;
    }

    std::array<int, 2> ends{};
};

class ConnectionTableTest : public testing::Test {
protected:
    /// Adds a connection that has received `bytes` since `since` and, if `waits`, waits for its
    /// client.
    std::shared_ptr<TrackedSocket> Add(Client const& client, Time since, std::int64_t bytes,
                                       bool waits = true) {
        auto tracked = table.Add(client.ends[0], since);
        if (tracked) {
            tracked->Count(bytes);
            if (waits) tracked->BeginWait(start + seconds(100));
        }
        return tracked;
    }

    Time const start{seconds(1000)};
    ConnectionTable table{3};
    std::array<Client, 5> clients;
};

TEST_F(ConnectionTableTest, DropsTheSlowestWaitingConnectionWhenFull) {
    auto dripping = Add(clients[0], start, 20);
    auto sending = Add(clients[1], start, 1'000'000);
    auto answered = Add(clients[2], start, 0, /*waits=*/false);
    Time now = start + seconds(10);
    ASSERT_TRUE(Add(clients[3], now, 0));
    EXPECT_TRUE(clients[0].IsDropped());
    EXPECT_FALSE(clients[1].IsDropped());
    table.Remove(dripping);
    // The newest one has sent nothing either, but it is only just connected.
    ASSERT_TRUE(Add(clients[4], now, 0));
    EXPECT_TRUE(clients[3].IsDropped());
    EXPECT_FALSE(clients[1].IsDropped());
    EXPECT_FALSE(clients[2].IsDropped());
}

TEST_F(ConnectionTableTest, RefusesANewConnectionIfNoneIsWaiting) {
    for (int i = 0; i < 3; ++i)
        Add(clients[i], start, 0, /*waits=*/false);
    EXPECT_FALSE(Add(clients[3], start, 0));
}

TEST_F(ConnectionTableTest, DropsOverdueConnectionsOnly) {
    auto overdue = Add(clients[0], start, 0);
    auto served = Add(clients[1], start, 0);
    served->EndWait();
    table.DropOverdue(start + seconds(100));
    EXPECT_FALSE(clients[0].IsDropped());
    table.DropOverdue(start + seconds(101));
    EXPECT_TRUE(clients[0].IsDropped());
    EXPECT_FALSE(clients[1].IsDropped());
    // After Remove the descriptor may belong to another connection.
    table.Remove(served);
    served->ShutDown();
    EXPECT_FALSE(clients[1].IsDropped());
}

TEST(PaceTest, RequiresTheAverageRate) {
    struct Step {
        int waited;  // seconds
        std::int64_t bytes;
    };
    struct Row {
        std::vector<Step> steps;
        bool inTime;
    };
    for (Row const& row : std::vector<Row>{
             {{{10, 30'720}, {29, 1}}, true},
             {{{30, 30'719}}, false},
             {{{30, 30'720}}, true},
             {{{29, 1}, {1, 1}}, false},
             {{{29, 100'000}, {2, 1}, {29, 1}, {2, 1}}, false},
         }) {
        Pace pace{PaceRule{}};
        Time now{};
        bool inTime = true;
        for (Step const& step : row.steps) {
            pace.BeginWait(now);
            now += seconds(step.waited);
            inTime = pace.EndWait(step.bytes, now);
            now += std::chrono::hours(1);  // time outside of waits does not count
        }
        EXPECT_EQ(inTime, row.inTime) << row.steps.size() << " " << row.steps[0].bytes;
    }
    Pace pace{PaceRule{}};
    EXPECT_EQ(pace.BeginWait(Time{}), Time{} + seconds(30));
    pace.EndWait(30'720, Time{} + seconds(10));
    EXPECT_EQ(pace.BeginWait(Time{} + seconds(10)), Time{} + seconds(60));
}

}  // namespace
}  // namespace quilloservice::http
