#include "bench/line_bench/Shaper.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <deque>
#include <functional>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "bench/line_bench/Rate.h"

namespace linebench {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t kMostAtOnce = 32 << 10;
constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;

/// Both ends of a connection, and what it may carry.
struct Connection {
    Connection(asio::io_context& context, tcp::socket client, std::uint64_t bytesPerSecond)
        : client(std::move(client)), service(context), rate(bytesPerSecond) {}

    tcp::socket client;
    tcp::socket service;
    Rate rate;
    std::uint64_t passed = 0;
};

/// One direction of a connection. It keeps itself alive until one of its ends is closed.
class Pump : public std::enable_shared_from_this<Pump> {
public:
    /// Called with a number of bytes; answers when they have passed the line.
    using Pass = std::function<Clock::time_point(std::uint64_t bytes)>;

    Pump(std::shared_ptr<Connection> connection, tcp::socket& from, tcp::socket& to, Pass pass,
         std::chrono::milliseconds oneWay)
        : connection(std::move(connection)),
          from(from),
          to(to),
          pass(std::move(pass)),
          oneWay(oneWay),
          readTimer(from.get_executor()),
          writeTimer(from.get_executor()) {}

    void ReadAt(Clock::time_point time) {
        readTimer.expires_at(time);
        readTimer.async_wait([self = shared_from_this()](error_code) { self->Read(); });
    }

private:
    struct Piece {
        Clock::time_point due;
        std::vector<char> bytes;  // none: the end
    };

    void Read() {
        auto piece = std::make_shared<std::vector<char>>(kMostAtOnce);
        auto const space = asio::buffer(*piece);
        from.async_read_some(
            space, [self = shared_from_this(), piece](error_code failed, std::size_t bytes) {
                piece->resize(failed ? 0 : bytes);
                auto const passed = failed ? Clock::now() : self->pass(bytes);
                self->Enqueue({passed + self->oneWay, std::move(*piece)});
                if (!failed) self->ReadAt(passed);
            });
    }

    void Enqueue(Piece piece) {
        queue.push_back(std::move(piece));
        if (queue.size() == 1) WriteFirst();
    }

    void WriteFirst() {
        writeTimer.expires_at(queue.front().due);
        writeTimer.async_wait([self = shared_from_this()](error_code) {
            auto const& bytes = self->queue.front().bytes;
            if (bytes.empty()) return self->Close();
            asio::async_write(self->to, asio::buffer(bytes), [self](error_code failed, auto) {
                if (failed) return self->Close();
                self->queue.pop_front();
                if (!self->queue.empty()) self->WriteFirst();
            });
        });
    }

    void Close() {
        error_code ignored;
        to.shutdown(tcp::socket::shutdown_both, ignored);
        from.shutdown(tcp::socket::shutdown_both, ignored);
    }

    std::shared_ptr<Connection> connection;
    tcp::socket& from;
    tcp::socket& to;
    Pass pass;
    std::chrono::milliseconds oneWay;
    asio::steady_timer readTimer;
    asio::steady_timer writeTimer;
    std::deque<Piece> queue;  // what is on the line
};

}  // namespace

class Shaper::Implementation {
public:
    Implementation(std::string const& service, Line const& line)
        : line(line),
          rate(line.bytesPerSecond),
          upstream(asio::ip::address_v4::loopback(),
                   static_cast<std::uint16_t>(std::stoul(service.substr(service.rfind(':') + 1)))) {
        Accept();
        thread = std::thread([this] { context.run(); });
    }

    ~Implementation() {
        context.stop();
        thread.join();
    }
    Implementation(Implementation const&) = delete;
    Implementation& operator=(Implementation const&) = delete;

    [[nodiscard]] std::string Address() const {
        return "http://127.0.0.1:" + std::to_string(acceptor.local_endpoint().port());
    }

private:
    void Accept() {
        acceptor.async_accept([this](error_code failed, tcp::socket client) {
            if (failed) return;
            Begin(std::move(client));
            Accept();
        });
    }

    void Begin(tcp::socket client) {
        auto connection =
            std::make_shared<Connection>(context, std::move(client), line.connectionBytesPerSecond);
        error_code failed;
        connection->service.connect(upstream, failed);
        if (failed) return;
        for (auto* socket : {&connection->client, &connection->service})
            socket->set_option(tcp::no_delay(true));
        auto const start = Clock::now() + 2 * line.oneWay;
        std::make_shared<Pump>(
            connection, connection->client, connection->service,
            [this, connection = connection.get()](auto bytes) { return Pass(*connection, bytes); },
            line.oneWay)
            ->ReadAt(start);
        std::make_shared<Pump>(
            connection, connection->service, connection->client, [](auto) { return Clock::now(); },
            line.oneWay)
            ->ReadAt(start);
    }

    Clock::time_point Pass(Connection& connection, std::uint64_t bytes) {
        auto const now = Clock::now();
        auto const mib = connection.passed / kMiB;
        connection.passed += bytes;
        auto passed = std::max(rate.Pass(now, bytes), connection.rate.Pass(now, bytes));
        if (connection.passed / kMiB != mib &&
            std::bernoulli_distribution(line.stallsPerMib)(random))
            passed += line.stall;
        return passed;
    }

    Line const line;
    Rate rate;
    std::mt19937 random{1};
    tcp::endpoint const upstream;
    asio::io_context context;
    tcp::acceptor acceptor{context, tcp::endpoint(asio::ip::address_v4::loopback(), 0)};
    std::thread thread;
};

Shaper::Shaper(std::string const& service, Line const& line)
    : implementation(std::make_unique<Implementation>(service, line)) {}

Shaper::~Shaper() = default;

std::string Shaper::Address() const {
    return implementation->Address();
}

}  // namespace linebench
