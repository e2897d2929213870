#pragma once

#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "service/http/ConnectionTable.h"
#include "service/http/Exchange.h"
#include "service/http/Limits.h"
#include "service/http/Pace.h"
#include "service/http/RequestParser.h"

namespace quilloservice::http {

/// Shared by a server's connections, which it outlives.
struct ServerContext {
    Application& application;
    Limits limits;
    ConnectionTable table;
    boost::asio::io_context io;
    boost::asio::thread_pool workers;    ///< for work that may wait for the disk
    std::atomic<bool> draining = false;  ///< connections end with the request that they serve
};

/// A client's connection: reads requests, passes them to the application and sends the responses,
/// one after the other. A state machine that never blocks: it runs until its socket is not ready,
/// waits asynchronously, and continues. Runs on one thread at a time, an I/O thread or a worker.
/// Pending operations keep it alive.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(ServerContext& context, boost::asio::ip::tcp::socket socket,
               std::shared_ptr<TrackedSocket> tracked);
    ~Connection();
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    void Start();

private:
    enum class Stage {
        Head,     ///< read a request's head
        Decide,   ///< call Application::Begin
        Open,     ///< call Action::open
        Body,     ///< read the body
        Finish,   ///< call Action::finish
        Respond,  ///< send the response
        Skip,     ///< discard a small unread body to reach the next request
        Linger,   ///< discard input until the client has had time to read the response
    };
    enum class Received { Some, Nothing, End };

    void Advance();

    // The stages. False: the connection waits, works on another thread or has ended; the caller
    // must not touch this object any more.
    [[nodiscard]] bool ReadHead();
    [[nodiscard]] bool Decide();
    [[nodiscard]] bool Open();
    [[nodiscard]] bool ReadBody();
    [[nodiscard]] bool Finish();
    [[nodiscard]] bool SendResponse();
    [[nodiscard]] bool Skip();
    [[nodiscard]] bool Linger();

    void BeginHead(Duration patience);
    void BeginExchange();
    [[nodiscard]] bool BeginBody();
    void TakeBody();
    void Refuse(int status, std::string_view code, std::string_view message);
    void BeginResponse();
    [[nodiscard]] bool EndResponse();
    /// Reports the exchange to the application unless that has been done.
    void Report(bool isComplete);

    Received Receive(std::size_t most);
    [[nodiscard]] std::string_view GetInput() const;
    [[nodiscard]] bool WaitToRead(Time deadline);
    [[nodiscard]] bool WaitToWrite();
    /// Runs `work` on a worker, which then calls Advance.
    [[nodiscard]] bool Work(std::function<void()> work);
    [[nodiscard]] bool Close();
    [[nodiscard]] bool HandOverSocket();

    ServerContext& context;
    boost::asio::ip::tcp::socket socket;
    std::shared_ptr<TrackedSocket> tracked;
    /// Keeps the server running while it has connections.
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> running;
    std::string remoteAddress;
    Stage stage = Stage::Head;
    unsigned steps = 0;
    boost::beast::flat_buffer input;
    std::unique_ptr<RequestParser> parser;
    Time deadline{};         ///< for the stages Head, Skip and Linger
    bool headBegun = false;  ///< the head's first byte has arrived
    Time began{};            ///< ditto: when
    bool delayed = false;    ///< the simulated latency has passed

    std::shared_ptr<Exchange> exchange;
    Outcome outcome{};
    bool isReported = false;
    Action action;
    Pace pace;
    bool waited = false;       ///< `pace` is in a wait
    bool bodyArrived = false;  ///< there is input that the parser has not seen
    bool bodyOver = false;     ///< no more of the body is read; it may be incomplete
    bool continued = false;    ///< reading the body has begun, after 100 Continue if expected

    std::string output;
    std::size_t sent = 0;
    std::int64_t contentLeft = 0;
    bool last = false;  ///< the connection ends after the response
};

}  // namespace quilloservice::http
