#include "quilloauth/LoopbackListener.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "quilloauth/LoopbackRequest.h"

namespace quilloauth {

using moxcore::utility::Descriptor;
namespace {

constexpr int kBacklog = 16;
constexpr std::size_t kMostConnections = 16;
constexpr std::size_t kLongestHead = 16 * 1024;
constexpr std::string_view kEndOfHead = "\r\n\r\n";

[[noreturn]] void ThrowErrno(char const* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

Descriptor Checked(int number, char const* what) {
    if (number < 0) ThrowErrno(what);
    return Descriptor(number);
}

/// Binds to a free port and returns it.
std::uint16_t Listen(int socket) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    auto* const generic = reinterpret_cast<sockaddr*>(&place);
    if (bind(socket, generic, size) != 0 || listen(socket, kBacklog) != 0 ||
        getsockname(socket, generic, &size) != 0)
        ThrowErrno("no port can be opened");
    return ntohs(place.sin_port);
}

}  // namespace

/// A browser's connection, until its one request is answered.
struct LoopbackListener::Connection {
    Descriptor socket;
    std::string received{};

    /// Takes what has arrived; false when no more will.
    bool Receive() {
        std::array<char, 4096> piece{};
        auto const count = recv(socket.GetNumber(), piece.data(), piece.size(), 0);
        if (count < 0) return errno == EAGAIN || errno == EINTR;
        received.append(piece.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    /// A page is smaller than what an empty socket takes at once.
    void Send(std::string const& answer) const {
        static_cast<void>(send(socket.GetNumber(), answer.data(), answer.size(), MSG_NOSIGNAL));
        shutdown(socket.GetNumber(), SHUT_WR);
    }
};

LoopbackListener::LoopbackListener(std::string path)
    : path(std::move(path)),
      port(Checked(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0),
                   "no socket can be made")),
      wake(Checked(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "no event can be made")),
      address("http://127.0.0.1:" + std::to_string(Listen(port.GetNumber())) + this->path) {}

LoopbackListener::~LoopbackListener() = default;

void LoopbackListener::Stop() {
    eventfd_write(wake.GetNumber(), 1);
}

void LoopbackListener::Serve(Handler const& handler) {
    Descriptor const listening = std::exchange(port, Descriptor());
    std::vector<Connection> connections;
    for (;;) {
        std::vector<pollfd> files{{wake.GetNumber(), POLLIN, 0},
                                  {listening.GetNumber(), POLLIN, 0}};
        for (auto const& connection : connections)
            files.push_back({connection.socket.GetNumber(), POLLIN, 0});
        if (poll(files.data(), files.size(), -1) < 0) continue;
        if (files[0].revents != 0) return;

        std::vector<Connection> kept;
        for (std::size_t i = 0; i < connections.size(); ++i) {
            auto& connection = connections[i];
            bool const open = files[i + 2].revents == 0 || connection.Receive();
            bool const whole = connection.received.find(kEndOfHead) != std::string::npos;
            if (whole)
                connection.Send(Respond(connection.received, handler));
            else if (open && connection.received.size() <= kLongestHead)
                kept.push_back(std::move(connection));
        }
        connections = std::move(kept);

        if (files[1].revents == 0) continue;
        Descriptor accepted(
            accept4(listening.GetNumber(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (accepted)
            connections.push_back({std::move(accepted)});
        else if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED)
            ThrowErrno("no connection can be taken");
        if (connections.size() > kMostConnections) connections.erase(connections.begin());
    }
}

std::string LoopbackListener::Respond(std::string const& head, Handler const& handler) const {
    auto const query = ReadLoopbackQuery(head, path);
    if (!query)
        return RenderAnswer(
            {404, "Nothing here", "This is not a page that anybody is waiting for."});
    return RenderAnswer(handler(*query));
}

}  // namespace quilloauth
