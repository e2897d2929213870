#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace testsupport {

/// One connection at the server's end.
class Peer {
public:
    explicit Peer(int socket) : socket(socket) {}
    ~Peer() { HangUp(); }
    Peer(Peer const&) = delete;
    Peer& operator=(Peer const&) = delete;

    /// What comes up to and with `end`, or to the connection's end.
    std::string Hear(std::string const& end) const {
        std::string heard;
        char c = 0;
        while (!heard.ends_with(end) && recv(socket, &c, 1, 0) == 1)
            heard += c;
        return heard;
    }

    /// How many of `size` bytes come.
    [[nodiscard]] std::size_t HearBytes(std::size_t size) const {
        std::string bytes(size, '\0');
        auto const got = size == 0 ? 0 : recv(socket, bytes.data(), size, MSG_WAITALL);
        return got < 0 ? 0 : static_cast<std::size_t>(got);
    }

    /// False when the other side has gone.
    bool Say(std::string_view bytes) const {
        while (!bytes.empty()) {
            auto const sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) return false;
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }

    void HangUp() {
        if (socket >= 0) close(std::exchange(socket, -1));
    }

private:
    int socket;
};

/// A server that deals with its connections, one after the other, as the test has it. They stay
/// open until it ends.
class RawServer {
public:
    explicit RawServer(std::function<void(Peer&)> serve)
        : serve(std::move(serve)), listener(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            listen(listener, 8) != 0 ||
            getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error("no port to be had");
        url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
        thread = std::thread([this] { Serve(); });
    }
    ~RawServer() {
        shutdown(listener, SHUT_RDWR);
        thread.join();
        close(listener);
    }
    RawServer(RawServer const&) = delete;
    RawServer& operator=(RawServer const&) = delete;

    [[nodiscard]] std::string const& Url() const { return url; }
    [[nodiscard]] int Connections() const { return connections; }

private:
    void Serve() {
        std::list<Peer> peers;
        for (int peer = 0; (peer = accept(listener, nullptr, nullptr)) >= 0;) {
            ++connections;
            serve(peers.emplace_back(peer));
        }
    }

    std::function<void(Peer&)> const serve;
    int const listener;
    std::string url;
    std::atomic<int> connections = 0;
    std::thread thread;
};

/// Answers every connection with the same bytes, whatever it is sent, and then ends or keeps it.
class CannedServer : public RawServer {
public:
    CannedServer(std::string const& answer, bool keepsOpen)
        : RawServer([answer, keepsOpen](Peer& peer) {
              peer.Hear("\r\n\r\n");
              peer.Say(answer);
              if (!keepsOpen) peer.HangUp();
          }) {}
};

}  // namespace testsupport
