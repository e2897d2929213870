#include "service/http/Connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

#include "service/base/ApiError.h"

namespace quilloservice::http {

namespace {

namespace asio = boost::asio;

constexpr std::size_t kHeadPiece = 4 * 1024;
constexpr std::size_t kSmallPiece = 16 * 1024;
constexpr std::size_t kStreamPiece = 256 * 1024;
constexpr std::size_t kContentPiece = 128 * 1024;
// So that a client that never lets the server wait leaves room for others.
constexpr unsigned kStepsInARow = 64;

Time Now() {
    return std::chrono::steady_clock::now();
}

/// The value of the header Date, made once a second.
std::string const& Date() {
    thread_local std::time_t madeAt = -1;
    thread_local std::string date;
    if (std::time_t now = std::time(nullptr); now != madeAt) {
        date = FormatDate(now);
        madeAt = now;
    }
    return date;
}

}  // namespace

Connection::Connection(ServerContext& context, asio::ip::tcp::socket socket,
                       std::shared_ptr<TrackedSocket> tracked)
    : context_(context),
      socket_(std::move(socket)),
      tracked_(std::move(tracked)),
      running_(asio::make_work_guard(context.io)),
      pace_(context.limits.pace) {
    boost::system::error_code gone;
    socket_.set_option(asio::ip::tcp::no_delay(true), gone);
    remoteAddress_ = socket_.remote_endpoint(gone).address().to_string();
}

Connection::~Connection() {
    if (tracked_) context_.table.Remove(tracked_);
}

void Connection::Start() {
    BeginHead(context_.limits.head);
    Advance();
}

void Connection::Advance() {
    for (;;) {
        if (++steps_ % kStepsInARow == 0) {
            asio::post(context_.io, [self = shared_from_this()] { self->Advance(); });
            return;
        }
        bool goesOn = false;
        switch (stage_) {
            case Stage::Head:
                goesOn = ReadHead();
                break;
            case Stage::Decide:
                goesOn = Decide();
                break;
            case Stage::Body:
                goesOn = ReadBody();
                break;
            case Stage::Finish:
                goesOn = Finish();
                break;
            case Stage::Answer:
                goesOn = SendAnswer();
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
    stage_ = Stage::Head;
    parser_ = std::make_unique<RequestParser>();
    exchange_.reset();
    action_ = {};
    headBegun_ = false;
    delayed_ = false;
    continued_ = false;
    bodyOver_ = false;
    Time now = Now();
    deadline_ = now + patience;
    tracked_->BeginStage(now);
}

bool Connection::ReadHead() {
    for (;;) {
        if (input_.size() > 0) {
            if (!std::exchange(headBegun_, true)) {
                deadline_ = std::min(deadline_, Now() + context_.limits.head);
            }
            try {
                if (std::size_t size = parser_->ReadHead(Input())) {
                    input_.consume(size);
                    stage_ = Stage::Decide;
                    return true;
                }
            } catch (ApiError const& error) {
                exchange_ = std::make_shared<Exchange>();
                exchange_->request.method = "GET";
                last_ = true;
                Refuse(error.status, error.code, error.what());
                return true;
            }
        }
        Received received = Receive(kHeadPiece);
        if (received == Received::End) return Close();
        if (received == Received::Nothing) return WaitToRead(deadline_);
    }
}

bool Connection::Decide() {
    if (context_.limits.latency > Duration{} && !std::exchange(delayed_, true)) {
        auto timer = std::make_shared<asio::steady_timer>(context_.io, context_.limits.latency);
        timer->async_wait([self = shared_from_this(), timer](auto) { self->Advance(); });
        return false;
    }
    exchange_ = std::make_shared<Exchange>();
    exchange_->request = std::move(parser_->request());
    exchange_->request.remoteAddress = remoteAddress_;
    exchange_->abort = [tracked = std::weak_ptr(tracked_)] {
        if (auto alive = tracked.lock()) alive->ShutDown();
    };
    last_ = exchange_->request.closes;
    action_ = context_.application.Begin(exchange_);
    if (action_.body == Action::Body::None) {
        stage_ = Stage::Finish;
        return true;
    }
    if (action_.body == Action::Body::Stream) {
        return Work([this] {
            if (action_.open()) {
                stage_ = Stage::Body;
                bodyArrived_ = true;
            } else {
                BeginAnswer();
            }
        });
    }
    stage_ = Stage::Body;
    bodyArrived_ = true;
    if (exchange_->request.bodyLength.value_or(0) >
        static_cast<std::int64_t>(context_.limits.smallBody)) {
        Refuse(413, "too_large", "The body is larger than 64 KiB.");
    }
    return true;
}

/// Asks a client that waits for it to send the body.
bool Connection::BeginBody() {
    pace_ = Pace(context_.limits.pace);
    waited_ = false;
    tracked_->BeginStage(Now());
    continued_ = true;
    if (!exchange_->request.expectsContinue || input_.size() > 0) return true;
    constexpr std::string_view interim = "HTTP/1.1 100 Continue\r\n\r\n";
    // A connection that does not take these few bytes has not taken earlier answers either.
    return ::send(socket_.native_handle(), interim.data(), interim.size(),
                  MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(interim.size());
}

bool Connection::ReadBody() {
    if (!continued_ && !BeginBody()) return Close();
    bool streams = action_.body == Action::Body::Stream;
    for (;;) {
        if (bodyOver_ || parser_->complete()) {
            stage_ = Stage::Finish;
            return true;
        }
        if (std::exchange(bodyArrived_, false) && input_.size() > 0) {
            if (streams) return Work([this] { TakeBody(); });
            TakeBody();
            if (stage_ != Stage::Body) return true;
            continue;
        }
        std::size_t before = input_.size();
        Received received = Receive(streams ? kStreamPiece : kSmallPiece);
        if (received == Received::Nothing) {
            waited_ = true;
            return WaitToRead(pace_.BeginWait(Now()));
        }
        auto bytes = static_cast<std::int64_t>(input_.size() - before);
        bool inTime = true;
        if (std::exchange(waited_, false)) {
            inTime = pace_.EndWait(bytes, Now());
        } else {
            pace_.Count(bytes);
        }
        bodyOver_ = received == Received::End || !inTime;
        bodyArrived_ = true;
    }
}

/// Hands what there is of the body to the application.
void Connection::TakeBody() {
    bool streams = action_.body == Action::Body::Stream;
    bool refused = false;
    try {
        std::size_t size = parser_->ReadBody(Input(), [&](std::string_view piece) {
            if (refused) return;
            if (streams) {
                refused = !action_.take(piece);
            } else {
                exchange_->body += piece;
                refused = exchange_->body.size() > context_.limits.smallBody;
            }
        });
        input_.consume(size);
    } catch (ApiError const&) {
        bodyOver_ = true;  // where the next request would begin is not certain
        last_ = true;
        return;
    }
    if (!refused) return;
    if (streams) {
        BeginAnswer();
    } else {
        Refuse(413, "too_large", "The body is larger than 64 KiB.");
    }
}

bool Connection::Finish() {
    bool complete = action_.body == Action::Body::None || parser_->complete();
    if (action_.quick) {
        action_.finish(complete);
        BeginAnswer();
        return true;
    }
    return Work([this, complete] {
        action_.finish(complete);
        BeginAnswer();
    });
}

void Connection::Refuse(int status, std::string_view code, std::string_view message) {
    context_.application.Refuse(*exchange_, status, code, message);
    BeginAnswer();
}

void Connection::BeginAnswer() {
    action_ = {};  // and with it what it holds on to
    Request const& request = exchange_->request;
    Response& response = exchange_->response;
    // A body that was not read stands before the next request. To skip it is worth it when it is
    // small, and certain to come.
    bool skippable = request.bodyLength && !bodyOver_ &&
                     *request.bodyLength <= static_cast<std::int64_t>(context_.limits.smallBody) &&
                     (continued_ || !request.expectsContinue);
    last_ |= response.closes || (!parser_->complete() && !skippable);
    output_ = response.Head(Date(), last_);
    sent_ = 0;
    contentLeft_ = 0;
    if (request.method != "HEAD") {
        output_ += response.body;
        if (response.content) contentLeft_ = response.contentLength;
    }
    pace_ = Pace(context_.limits.pace);
    waited_ = false;
    tracked_->BeginStage(Now());
    tracked_->CutAtStop(contentLeft_ > 0);
    stage_ = Stage::Answer;
}

bool Connection::SendAnswer() {
    if (exchange_->response.cut) return Close();
    for (;;) {
        while (sent_ < output_.size()) {
            ssize_t count = ::send(socket_.native_handle(), output_.data() + sent_,
                                   output_.size() - sent_, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && errno == EAGAIN) {
                waited_ = true;
                return WaitToWrite();
            }
            if (count < 0) return Close();
            sent_ += static_cast<std::size_t>(count);
            tracked_->Count(count);
            if (!std::exchange(waited_, false)) {
                pace_.Count(count);
            } else if (!pace_.EndWait(count, Now())) {
                return Close();
            }
        }
        if (contentLeft_ == 0) return EndAnswer();
        return Work([this] {
            // The head, once sent, promises a length: what cannot be read cuts the connection.
            auto size = std::min<std::int64_t>(contentLeft_, kContentPiece);
            output_.resize(static_cast<std::size_t>(size));
            std::size_t count = 0;
            try {
                count = exchange_->response.content->Read(output_.data(), output_.size());
            } catch (const std::exception& error) {
                std::fprintf(stderr, "quillo-service: %s\n", error.what());
            }
            output_.resize(count);
            sent_ = 0;
            contentLeft_ -= static_cast<std::int64_t>(count);
            if (count == 0) exchange_->response.cut = true;
        });
    }
}

bool Connection::EndAnswer() {
    output_ = {};
    tracked_->CutAtStop(false);
    if (exchange_->response.takeOver && exchange_->request.method != "HEAD") return GiveAway();
    if (last_ || exchange_->response.takeOver) {
        // Closing a socket with unread bytes resets the connection, and the client might lose the
        // answer that it has not read yet.
        ::shutdown(socket_.native_handle(), SHUT_WR);
        deadline_ = Now() + context_.limits.linger;
        stage_ = Stage::Linger;
    } else if (!parser_->complete()) {
        deadline_ = Now() + context_.limits.head;
        bodyArrived_ = true;
        stage_ = Stage::Skip;
    } else {
        BeginHead(context_.limits.idle);
    }
    return true;
}

bool Connection::Skip() {
    for (;;) {
        if (std::exchange(bodyArrived_, false) && input_.size() > 0) {
            try {
                input_.consume(parser_->ReadBody(Input(), [](std::string_view) {}));
            } catch (ApiError const&) {
                return Close();
            }
        }
        if (parser_->complete()) {
            BeginHead(context_.limits.idle);
            return true;
        }
        Received received = Receive(kSmallPiece);
        if (received == Received::End) return Close();
        if (received == Received::Nothing) return WaitToRead(deadline_);
        bodyArrived_ = true;
    }
}

bool Connection::Linger() {
    input_.clear();
    if (Now() > deadline_) return Close();
    Received received = Receive(kSmallPiece);
    if (received == Received::End) return Close();
    if (received == Received::Nothing) return WaitToRead(deadline_);
    return true;
}

Connection::Received Connection::Receive(std::size_t most) {
    auto room = input_.prepare(most);
    ssize_t count = 0;
    do {
        count = ::recv(socket_.native_handle(), room.data(), room.size(), MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        input_.commit(static_cast<std::size_t>(count));
        tracked_->Count(count);
        return Received::Some;
    }
    if (count == 0 || errno != EAGAIN) return Received::End;
    // A connection that waits for its client holds no more memory than it has to.
    if (input_.size() == 0 && input_.capacity() <= kSmallPiece) input_ = {};
    return Received::Nothing;
}

std::string_view Connection::Input() const {
    auto data = input_.cdata();
    return {static_cast<char const*>(data.data()), data.size()};
}

bool Connection::WaitToRead(Time deadline) {
    tracked_->BeginWait(deadline);
    socket_.async_wait(asio::ip::tcp::socket::wait_read, [self = shared_from_this()](auto) {
        self->tracked_->EndWait();
        self->Advance();
    });
    return false;
}

bool Connection::WaitToWrite() {
    tracked_->BeginWait(pace_.BeginWait(Now()));
    socket_.async_wait(asio::ip::tcp::socket::wait_write, [self = shared_from_this()](auto) {
        self->tracked_->EndWait();
        self->Advance();
    });
    return false;
}

bool Connection::Work(std::function<void()> work) {
    asio::post(context_.workers, [self = shared_from_this(), work = std::move(work)] {
        work();
        self->Advance();
    });
    return false;
}

bool Connection::Close() {
    context_.table.Remove(std::exchange(tracked_, nullptr));
    boost::system::error_code ignored;
    socket_.close(ignored);
    return false;
}

bool Connection::GiveAway() {
    context_.table.Remove(std::exchange(tracked_, nullptr));
    boost::system::error_code failed;
    int socket = socket_.release(failed);
    if (!failed) exchange_->response.takeOver(socket);
    return false;
}

}  // namespace quilloservice::http
