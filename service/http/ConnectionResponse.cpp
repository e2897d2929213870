#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

#include "service/base/ApiError.h"
#include "service/http/Connection.h"

namespace quilloservice::http {

namespace {

constexpr std::size_t kContentPiece = 128 * 1024;
constexpr std::size_t kDiscardedPiece = 16 * 1024;

/// The value of the header Date, cached for a second.
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

void Connection::BeginResponse() {
    action = {};  // releases what its functions capture
    Request const& request = exchange->request;
    Response& response = exchange->response;
    // An unread body precedes the next request. It is skipped if it is small and sure to arrive.
    bool skippable = request.bodyLength && !bodyOver &&
                     *request.bodyLength <= static_cast<std::int64_t>(context.limits.smallBody) &&
                     (continued || !request.expectsContinue);
    last |= response.closes || context.draining || (!parser->IsComplete() && !skippable);
    output = response.Head(Date(), last);
    sent = 0;
    contentLeft = 0;
    if (request.method != "HEAD") {
        output += response.body;
        if (response.content) contentLeft = response.contentLength;
    }
    pace = Pace(context.limits.pace);
    waited = false;
    tracked->BeginStage(Now());
    tracked->CutAtStop(contentLeft > 0);
    stage = Stage::Respond;
}

bool Connection::SendResponse() {
    if (exchange->response.cut) return Close();
    for (;;) {
        while (sent < output.size()) {
            ssize_t count = ::send(socket.native_handle(), output.data() + sent,
                                   output.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && errno == EAGAIN) {
                waited = true;
                return WaitToWrite();
            }
            if (count < 0) return Close();
            sent += static_cast<std::size_t>(count);
            outcome.sent += count;
            tracked->Count(count);
            if (!std::exchange(waited, false)) {
                pace.Count(count);
            } else if (!pace.EndWait(count, Now())) {
                return Close();
            }
        }
        if (contentLeft == 0) return EndResponse();
        return Work([this] {
            // The head has announced the length, so a read error cuts the connection.
            auto size = std::min<std::int64_t>(contentLeft, kContentPiece);
            output.resize(static_cast<std::size_t>(size));
            std::size_t count = 0;
            try {
                count = exchange->response.content->Read(output.data(), output.size());
            } catch (std::exception const& error) {
                std::fprintf(stderr, "quillo-service: %s\n", error.what());
            }
            output.resize(count);
            sent = 0;
            contentLeft -= static_cast<std::int64_t>(count);
            if (count == 0) exchange->response.cut = true;
        });
    }
}

void Connection::Report(bool isComplete) {
    if (!exchange || std::exchange(isReported, true)) return;
    outcome.took = Now() - began;
    outcome.isComplete = isComplete;
    context.application.Ended(*exchange, outcome);
}

bool Connection::EndResponse() {
    Report(true);
    output = {};
    tracked->CutAtStop(false);
    if (exchange->response.takeOver && exchange->request.method != "HEAD") return HandOverSocket();
    if (last || exchange->response.takeOver) {
        // Closing a socket with unread input resets the connection, and the client could lose the
        // response.
        ::shutdown(socket.native_handle(), SHUT_WR);
        deadline = Now() + context.limits.linger;
        stage = Stage::Linger;
    } else if (!parser->IsComplete()) {
        deadline = Now() + context.limits.head;
        bodyArrived = true;
        stage = Stage::Skip;
    } else {
        BeginHead(context.limits.idle);
    }
    return true;
}

bool Connection::Skip() {
    for (;;) {
        if (std::exchange(bodyArrived, false) && input.size() > 0) {
            try {
                input.consume(parser->ReadBody(GetInput(), [](std::string_view) {}));
            } catch (ApiError const&) {
                return Close();
            }
        }
        if (parser->IsComplete()) {
            BeginHead(context.limits.idle);
            return true;
        }
        Received received = Receive(kDiscardedPiece);
        if (received == Received::End) return Close();
        if (received == Received::Nothing) return WaitToRead(deadline);
        bodyArrived = true;
    }
}

bool Connection::Linger() {
    input.clear();
    if (Now() > deadline) return Close();
    Received received = Receive(kDiscardedPiece);
    if (received == Received::End) return Close();
    if (received == Received::Nothing) return WaitToRead(deadline);
    return true;
}

}  // namespace quilloservice::http
