#include "service/Connection.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "service/HttpServer.h"

namespace quilloservice {

namespace {

constexpr std::size_t kBufferBytes = 128 * 1024;
// A client that stalls in the middle of a request for longer has gone.
constexpr time_t kStallSeconds = 30;
constexpr std::chrono::milliseconds kLinger{2000};

template <typename Name>
void ReadAddress(Name name, socket_t socket, std::string& ip, int& port) {
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    char host[NI_MAXHOST];
    char service[NI_MAXSERV];
    if (name(socket, generic, &length) != 0 ||
        ::getnameinfo(generic, length, host, sizeof(host), service, sizeof(service),
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return;
    }
    ip = host;
    port = std::atoi(service);
}

bool WaitReadable(socket_t socket, int milliseconds) {
    pollfd poll{socket, POLLIN, 0};
    return ::poll(&poll, 1, milliseconds) > 0;
}

}  // namespace

Connection::Connection(HttpServer& server, socket_t socket)
    : server_(server),
      socket_(socket),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferBytes)) {
    int yes = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
    timeval stall{kStallSeconds, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &stall, sizeof(stall));
    ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &stall, sizeof(stall));
    std::scoped_lock lock(server_.mutex_);
    server_.connections_.insert(socket_);
    if (server_.stopping_) ::shutdown(socket_, SHUT_RD);
}

Connection::~Connection() {
    if (closeAfterAnswer_) Linger();
    {
        std::scoped_lock lock(server_.mutex_);
        server_.connections_.erase(socket_);
    }
    if (taker_) {
        taker_(socket_);
        return;
    }
    ::shutdown(socket_, SHUT_RDWR);
    ::close(socket_);
}

bool Connection::WaitForRequest(time_t seconds) {
    if (closeAfterAnswer_ || taker_) return false;
    headBudget_ = kHeadBytes;
    return begin_ < end_ || WaitReadable(socket_, static_cast<int>(seconds * 1000));
}

void Connection::Cut() {
    ::shutdown(socket_, SHUT_RDWR);
}

void Connection::Linger() {
    // Closing a socket with unread bytes resets the connection, and the client might lose the
    // answer that it has not read yet. So what it still sends is thrown away, for a while.
    ::shutdown(socket_, SHUT_WR);
    auto until = std::chrono::steady_clock::now() + kLinger;
    for (auto left = kLinger; left.count() > 0;
         left = std::chrono::duration_cast<std::chrono::milliseconds>(
             until - std::chrono::steady_clock::now())) {
        if (!WaitReadable(socket_, static_cast<int>(left.count())) ||
            Receive(buffer_.get(), kBufferBytes) <= 0) {
            return;
        }
    }
}

ssize_t Connection::read(char* data, size_t size) {
    if (begin_ == end_) {
        ssize_t count = Receive(buffer_.get(), kBufferBytes);
        if (count <= 0) return count;
        begin_ = 0;
        end_ = static_cast<std::size_t>(count);
    }
    if (headBudget_ == 0) return -1;
    std::size_t count = std::min({size, end_ - begin_, headBudget_});
    std::memcpy(data, buffer_.get() + begin_, count);
    begin_ += count;
    if (headBudget_ != kNoBudget) headBudget_ -= count;
    return static_cast<ssize_t>(count);
}

ssize_t Connection::Receive(char* data, size_t size) {
    for (;;) {
        ssize_t count = ::recv(socket_, data, size, 0);
        if (count >= 0 || errno != EINTR) return count;
    }
}

ssize_t Connection::write(const char* data, size_t size) {
    std::size_t sent = 0;
    while (sent < size) {
        ssize_t count = ::send(socket_, data + sent, size - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return -1;
        sent += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(size);
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    ReadAddress(::getpeername, socket_, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    ReadAddress(::getsockname, socket_, ip, port);
}

}  // namespace quilloservice
