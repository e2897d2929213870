#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace quilloservice::test {

/// A connection for sending arbitrary bytes.
class RawConnection {
public:
    explicit RawConnection(int port) : socket(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
            throw std::runtime_error("connect failed");
        }
    }
    ~RawConnection() { ::close(socket); }
    RawConnection(RawConnection const&) = delete;
    RawConnection& operator=(RawConnection const&) = delete;

    void Send(std::string_view text) const {
        while (!text.empty()) {
            ssize_t sent = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
            if (sent <= 0) return;
            text.remove_prefix(static_cast<std::size_t>(sent));
        }
    }
    void EndOutput() const { ::shutdown(socket, SHUT_WR); }

    /// Reads up to and including `end`, or to the end of the connection.
    std::string ReadTo(std::string_view end) const {
        std::string answer;
        char byte = 0;
        while (!answer.ends_with(end) && ::recv(socket, &byte, 1, 0) > 0)
            answer += byte;
        return answer;
    }

    std::string ReadAll() const {
        std::string answer;
        char buffer[4096];
        for (ssize_t count; (count = ::recv(socket, buffer, sizeof(buffer), 0)) > 0;) {
            answer.append(buffer, static_cast<std::size_t>(count));
        }
        return answer;
    }

private:
    int socket;
};

}  // namespace quilloservice::test
