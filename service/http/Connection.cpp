#include "service/http/Connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cerrno>
#include <utility>

#include "service/base/ApiError.h"
#include "service/http/Address.h"

namespace quilloservice::http {

namespace {

namespace asio = boost::asio;

constexpr std::size_t kHeadPiece = 4 * 1024;
constexpr std::size_t kSmallPiece = 16 * 1024;
constexpr std::size_t kStreamPiece = 256 * 1024;
// After this many steps a connection yields, so that a fast client does not occupy the thread.
constexpr unsigned kStepsInARow = 64;

}  // namespace

Connection::Connection(ServerContext& context, asio::ip::tcp::socket socket,
                       std::shared_ptr<TrackedSocket> tracked)
    : context(context),
      socket(std::move(socket)),
      tracked(std::move(tracked)),
      running(asio::make_work_guard(context.io)),
      pace(context.limits.pace) {
    boost::system::error_code gone;
    this->socket.set_option(asio::ip::tcp::no_delay(true), gone);
    std::string const address = this->socket.remote_endpoint(gone).address().to_string();
    remoteAddress = ParseAddress(address).value_or(address);
}

Connection::~Connection() {
    if (tracked) context.table.Remove(tracked);
}

void Connection::Start() {
    BeginHead(context.limits.head);
    Advance();
}

void Connection::Advance() {
    for (;;) {
        if (++steps % kStepsInARow == 0) {
            asio::post(context.io, [self = shared_from_this()] { self->Advance(); });
            return;
        }
        bool goesOn = false;
        switch (stage) {
            case Stage::Head:
                goesOn = ReadHead();
                break;
            case Stage::Decide:
                goesOn = Decide();
                break;
            case Stage::Open:
                goesOn = Open();
                break;
            case Stage::Body:
                goesOn = ReadBody();
                break;
            case Stage::Finish:
                goesOn = Finish();
                break;
            case Stage::Respond:
                goesOn = SendResponse();
                break;
            case Stage::Skip:
                goesOn = Skip();
                break;
            case Stage::Linger:
                goesOn = Linger();
                break;
        }
        if (!goesOn) return;
    }
}

void Connection::BeginHead(Duration patience) {
    stage = Stage::Head;
    parser = std::make_unique<RequestParser>();
    exchange.reset();
    action = {};
    headBegun = false;
    delayed = false;
    continued = false;
    bodyOver = false;
    outcome = {};
    isReported = false;
    tracked->SetBusy(false);
    if (context.draining) tracked->ShutDownInput();
    Time now = Now();
    deadline = now + patience;
    tracked->BeginStage(now);
}

bool Connection::ReadHead() {
    for (;;) {
        if (input.size() > 0) {
            if (!std::exchange(headBegun, true)) {
                tracked->SetBusy(true);
                began = Now();
                deadline = std::min(deadline, began + context.limits.head);
            }
            try {
                if (std::size_t size = parser->ReadHead(GetInput())) {
                    input.consume(size);
                    stage = Stage::Decide;
                    return true;
                }
            } catch (ApiError const& error) {
                exchange = std::make_shared<Exchange>();
                exchange->request.method = "GET";
                last = true;
                Refuse(error.status, error.code, error.what());
                return true;
            }
        }
        Received received = Receive(kHeadPiece);
        if (received == Received::End) return Close();
        if (received == Received::Nothing) return WaitToRead(deadline);
    }
}

bool Connection::Decide() {
    if (context.limits.latency > Duration{} && !std::exchange(delayed, true)) {
        auto timer = std::make_shared<asio::steady_timer>(context.io, context.limits.latency);
        timer->async_wait([self = shared_from_this(), timer](auto) { self->Advance(); });
        return false;
    }
    exchange = std::make_shared<Exchange>();
    exchange->request = std::move(parser->GetRequest());
    exchange->request.remoteAddress = remoteAddress;
    exchange->abort = [tracked = std::weak_ptr(tracked)] {
        if (auto alive = tracked.lock()) alive->ShutDown();
    };
    last = exchange->request.closes;
    if (context.limits.beginMayWait) return Work([this] { BeginExchange(); });
    BeginExchange();
    return true;
}

void Connection::BeginExchange() {
    action = context.application.Begin(exchange);
    switch (action.body) {
        case Action::Body::None:
            stage = Stage::Finish;
            return;
        case Action::Body::Stream:
            stage = Stage::Open;
            return;
        case Action::Body::Small:
            break;
    }
    stage = Stage::Body;
    bodyArrived = true;
    if (exchange->request.bodyLength.value_or(0) >
        static_cast<std::int64_t>(context.limits.smallBody)) {
        Refuse(413, "too_large", "The body is larger than 64 KiB.");
    }
}

bool Connection::Open() {
    return Work([this] {
        if (action.open()) {
            stage = Stage::Body;
            bodyArrived = true;
        } else {
            BeginResponse();
        }
    });
}

/// Prepares for the body; sends 100 Continue if the client expects it.
bool Connection::BeginBody() {
    pace = Pace(context.limits.pace);
    waited = false;
    tracked->BeginStage(Now());
    continued = true;
    if (!exchange->request.expectsContinue || input.size() > 0) return true;
    constexpr std::string_view kInterim = "HTTP/1.1 100 Continue\r\n\r\n";
    // The socket's buffer has room for these few bytes unless earlier responses were not read.
    return ::send(socket.native_handle(), kInterim.data(), kInterim.size(),
                  MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(kInterim.size());
}

bool Connection::ReadBody() {
    if (!continued && !BeginBody()) return Close();
    bool streams = action.body == Action::Body::Stream;
    for (;;) {
        if (bodyOver || parser->IsComplete()) {
            stage = Stage::Finish;
            return true;
        }
        if (std::exchange(bodyArrived, false) && input.size() > 0) {
            if (streams) return Work([this] { TakeBody(); });
            TakeBody();
            if (stage != Stage::Body) return true;
            continue;
        }
        std::size_t before = input.size();
        Received received = Receive(streams ? kStreamPiece : kSmallPiece);
        if (received == Received::Nothing) {
            waited = true;
            return WaitToRead(pace.BeginWait(Now()));
        }
        auto bytes = static_cast<std::int64_t>(input.size() - before);
        bool inTime = true;
        if (std::exchange(waited, false)) {
            inTime = pace.EndWait(bytes, Now());
        } else {
            pace.Count(bytes);
        }
        bodyOver = received == Received::End || !inTime;
        bodyArrived = true;
    }
}

/// Passes the received part of the body to the application.
void Connection::TakeBody() {
    bool streams = action.body == Action::Body::Stream;
    bool refused = false;
    try {
        std::size_t size = parser->ReadBody(GetInput(), [&](std::string_view piece) {
            if (refused) return;
            outcome.received += static_cast<std::int64_t>(piece.size());
            if (streams) {
                refused = !action.take(piece);
            } else {
                exchange->body += piece;
                refused = exchange->body.size() > context.limits.smallBody;
            }
        });
        input.consume(size);
    } catch (ApiError const&) {
        bodyOver = true;  // the start of the next request is unknown
        last = true;
        return;
    }
    if (!refused) return;
    if (streams) {
        BeginResponse();
    } else {
        Refuse(413, "too_large", "The body is larger than 64 KiB.");
    }
}

bool Connection::Finish() {
    bool complete = action.body == Action::Body::None || parser->IsComplete();
    if (action.quick) {
        action.finish(complete);
        BeginResponse();
        return true;
    }
    return Work([this, complete] {
        action.finish(complete);
        BeginResponse();
    });
}

void Connection::Refuse(int status, std::string_view code, std::string_view message) {
    context.application.Refuse(*exchange, status, code, message);
    BeginResponse();
}

Connection::Received Connection::Receive(std::size_t most) {
    auto room = input.prepare(most);
    ssize_t count = 0;
    do {
        count = ::recv(socket.native_handle(), room.data(), room.size(), MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        input.commit(static_cast<std::size_t>(count));
        tracked->Count(count);
        return Received::Some;
    }
    if (count == 0 || errno != EAGAIN) return Received::End;
    // Frees the buffer while the connection waits for its client.
    if (input.size() == 0 && input.capacity() <= kSmallPiece) input = {};
    return Received::Nothing;
}

std::string_view Connection::GetInput() const {
    auto data = input.cdata();
    return {static_cast<char const*>(data.data()), data.size()};
}

bool Connection::WaitToRead(Time deadline) {
    tracked->BeginWait(deadline);
    socket.async_wait(asio::ip::tcp::socket::wait_read, [self = shared_from_this()](auto) {
        self->tracked->EndWait();
        self->Advance();
    });
    return false;
}

bool Connection::WaitToWrite() {
    tracked->BeginWait(pace.BeginWait(Now()));
    socket.async_wait(asio::ip::tcp::socket::wait_write, [self = shared_from_this()](auto) {
        self->tracked->EndWait();
        self->Advance();
    });
    return false;
}

bool Connection::Work(std::function<void()> work) {
    asio::post(context.workers, [self = shared_from_this(), work = std::move(work)] {
        work();
        self->Advance();
    });
    return false;
}

bool Connection::Close() {
    Report(false);
    context.table.Remove(std::exchange(tracked, nullptr));
    boost::system::error_code ignored;
    socket.close(ignored);
    return false;
}

bool Connection::HandOverSocket() {
    context.table.Remove(std::exchange(tracked, nullptr));
    boost::system::error_code failed;
    int released = socket.release(failed);
    if (!failed) exchange->response.takeOver(released);
    return false;
}

}  // namespace quilloservice::http
