#pragma once

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

/// What the connections of a server share. Outlives them.
struct ServerContext {
    Application& application;
    Limits limits;
    ConnectionTable table;
    boost::asio::io_context io;
    boost::asio::thread_pool workers;  ///< for what may wait for the disk
};

/// One client's connection: reads requests, has the application answer them and sends the answers,
/// one after the other. It never blocks: it works until its socket is not ready, waits for that,
/// and goes on. One thread at a time works for it, an I/O thread or a worker. Kept alive by what it
/// waits for.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(ServerContext& context, boost::asio::ip::tcp::socket socket,
               std::shared_ptr<TrackedSocket> tracked);
    ~Connection();
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    void Start();

private:
    /// What is to be done next.
    enum class Stage {
        Head,    ///< read a request's head
        Decide,  ///< ask the application about it
        Body,    ///< read the body
        Finish,  ///< have the application answer
        Answer,  ///< send the answer
        Skip,    ///< read a small body that was not wanted, to come to the next request
        Linger,  ///< throw away what still comes, so that the client gets to read the answer
    };
    enum class Received { Some, Nothing, End };

    void Advance();

    // The stages. False: the connection waits, is at work elsewhere or has ended, and nothing of
    // this object may be touched any more.
    [[nodiscard]] bool ReadHead();
    [[nodiscard]] bool Decide();
    [[nodiscard]] bool ReadBody();
    [[nodiscard]] bool Finish();
    [[nodiscard]] bool SendAnswer();
    [[nodiscard]] bool Skip();
    [[nodiscard]] bool Linger();

    void BeginHead(Duration patience);
    [[nodiscard]] bool BeginBody();
    void TakeBody();
    void Refuse(int status, std::string_view code, std::string_view message);
    void BeginAnswer();
    [[nodiscard]] bool EndAnswer();

    Received Receive(std::size_t most);
    [[nodiscard]] std::string_view GetInput() const;
    [[nodiscard]] bool WaitToRead(Time deadline);
    [[nodiscard]] bool WaitToWrite();
    /// Runs `work` on a worker, which then goes on with Advance.
    [[nodiscard]] bool Work(std::function<void()> work);
    [[nodiscard]] bool Close();
    [[nodiscard]] bool GiveAway();

    ServerContext& context;
    boost::asio::ip::tcp::socket socket;
    std::shared_ptr<TrackedSocket> tracked;
    /// The server runs for as long as it has connections.
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> running;
    std::string remoteAddress;
    Stage stage = Stage::Head;
    unsigned steps = 0;
    boost::beast::flat_buffer input;
    std::unique_ptr<RequestParser> parser;
    Time deadline{};         ///< of the head, of a body that is skipped, of lingering
    bool headBegun = false;  ///< its first byte is there
    bool delayed = false;    ///< by the fault

    std::shared_ptr<Exchange> exchange;
    Action action;
    Pace pace;
    bool waited = false;       ///< for the client, within what `pace` watches
    bool bodyArrived = false;  ///< some that the parser has not seen
    bool bodyOver = false;     ///< no more of it is to be read, though it may not be complete
    bool continued = false;    ///< the client was told to send the body

    std::string output;
    std::size_t sent = 0;
    std::int64_t contentLeft = 0;
    bool last = false;  ///< the connection ends after the answer
};

}  // namespace quilloservice::http
