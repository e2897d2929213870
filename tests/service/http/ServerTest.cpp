#include "service/http/Server.h"

#include <gtest/gtest.h>

#include <latch>
#include <list>
#include <thread>

#include "service/http/Exchange.h"
#include "tests/service/RawConnection.h"

namespace quilloservice::http {
namespace {

constexpr int kWaiting = 4;  // as many as there are I/O threads

/// Begins requests of /wait once `goOn` allows it, and all others at once.
class WaitingApplication : public Application {
public:
    Action Begin(std::shared_ptr<Exchange> exchange) override {
        if (exchange->request.path == "/wait") {
            arrived.count_down();
            goOn.wait();
        }
        return {.quick = true,
                .finish = [exchange](bool) { exchange->response.SetBody("ok", "text/plain"); }};
    }
    void Refuse(Exchange&, int, std::string_view, std::string_view) override {}
    void Ended(Exchange const&, Outcome const&) override {}

    std::latch arrived{kWaiting};
    std::latch goOn{1};
};

TEST(Server, ServesOthersWhileRequestsWaitToBegin) {
    WaitingApplication application;
    Limits limits;
    limits.beginMayWait = true;
    Server server(application, limits);
    int const port = server.Bind("127.0.0.1", 0);
    std::thread serving([&] { server.Run(); });
    std::list<test::RawConnection> waiting;
    for (int i = 0; i < kWaiting; ++i)
        waiting.emplace_back(port).Send("GET /wait HTTP/1.1\r\nHost: x\r\n\r\n");
    application.arrived.wait();
    test::RawConnection const other(port);
    other.Send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_TRUE(other.ReadTo("ok").ends_with("ok"));
    application.goOn.count_down();
    for (test::RawConnection const& connection : waiting)
        EXPECT_TRUE(connection.ReadTo("ok").ends_with("ok"));
    server.Stop();
    serving.join();
}

}  // namespace
}  // namespace quilloservice::http
