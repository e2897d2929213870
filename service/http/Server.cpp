#include "service/http/Server.h"

#include <algorithm>
#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <thread>
#include <vector>

#include "service/http/Connection.h"

namespace quilloservice::http {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

constexpr int kBacklog = 4096;
constexpr int kWaitingThreads = 4;
constexpr int kWorkers = 8;
constexpr std::chrono::milliseconds kSweepEach{500};
constexpr std::chrono::milliseconds kSweepEachAtStop{5};
constexpr std::chrono::milliseconds kAcceptPause{20};

}  // namespace

struct Server::Parts {
    Parts(Application& application, Limits const& limits)
        : context{application, limits, ConnectionTable(limits.connections),
                  asio::io_context(kWaitingThreads), asio::thread_pool(kWorkers)},
          acceptor(asio::make_strand(context.io)),
          sweeper(acceptor.get_executor()) {}

    void Accept() {
        acceptor.async_accept(
            context.io, [this](boost::system::error_code error, tcp::socket socket) {
                if (!acceptor.is_open()) return;
                if (error) return PauseAccepting();
                if (auto tracked = context.table.Add(socket.native_handle(), Now())) {
                    auto connection = std::make_shared<Connection>(context, std::move(socket),
                                                                   std::move(tracked));
                    asio::post(context.io, [connection] { connection->Start(); });
                }
                Accept();
            });
    }

    /// Called if the process or the system has run out of descriptors.
    void PauseAccepting() {
        context.table.DropSlowest(Now());
        auto timer = std::make_shared<asio::steady_timer>(acceptor.get_executor(), kAcceptPause);
        timer->async_wait([this, timer](auto) {
            if (acceptor.is_open()) Accept();
        });
    }

    void Sweep() {
        sweeper.expires_after(stopping ? kSweepEachAtStop : kSweepEach);
        sweeper.async_wait([this](auto) {
            context.table.DropOverdue(Now());
            if (!stopping || context.table.GetSize() > 0) Sweep();
        });
    }

    void StopAccepting() {
        stopping = true;
        asio::post(acceptor.get_executor(), [this] {
            boost::system::error_code ignored;
            acceptor.close(ignored);
            sweeper.cancel();
        });
    }

    ServerContext context;
    tcp::acceptor acceptor;      // on a strand
    asio::steady_timer sweeper;  // on the acceptor's strand
    std::atomic<bool> stopping = false;
};

Server::Server(Application& application, Limits const& limits)
    : parts(std::make_unique<Parts>(application, limits)) {}

Server::~Server() = default;

int Server::Bind(std::string const& host, int port) {
    tcp::acceptor& acceptor = parts->acceptor;
    boost::system::error_code error;
    tcp::resolver resolver(parts->context.io);
    auto found = resolver.resolve(host, std::to_string(port), tcp::resolver::passive, error);
    if (error || found.empty()) return -1;
    tcp::endpoint endpoint = *found.begin();
    acceptor.open(endpoint.protocol(), error);
    // No SO_REUSEPORT: it would let two services share a port.
    if (!error) acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error) acceptor.bind(endpoint, error);
    if (!error) acceptor.listen(kBacklog, error);
    int bound = error ? -1 : acceptor.local_endpoint(error).port();
    if (error) {
        boost::system::error_code ignored;
        acceptor.close(ignored);
        return -1;
    }
    return bound;
}

void Server::Run() {
    parts->Accept();
    parts->Sweep();
    std::vector<std::thread> threads;
    for (int i = 1; i < kWaitingThreads; ++i)
        threads.emplace_back([&] { parts->context.io.run(); });
    parts->context.io.run();
    for (std::thread& thread : threads)
        thread.join();
    parts->context.workers.join();
}

void Server::Drain() {
    // Before the table's look: a connection that has just answered sees it.
    parts->context.draining = true;
    parts->context.table.Drain();
    parts->StopAccepting();
}

void Server::Stop() {
    parts->context.table.Stop();
    parts->StopAccepting();
}

std::size_t Server::CountConnections() const {
    return parts->context.table.GetSize();
}

std::size_t ConnectionsWithin(std::size_t descriptors) {
    // For the store, the log, the listening socket and the event streams.
    constexpr std::size_t kOthers = 96;
    std::size_t left = descriptors > kOthers ? descriptors - kOthers : 0;
    // A connection can also have a movie's file open.
    return std::max<std::size_t>(left * 3 / 4, 16);
}

}  // namespace quilloservice::http
