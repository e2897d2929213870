#pragma once

#include <httplib.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace quilloservice {

class HttpServer;

/// One client's connection. Belongs to the thread that serves it.
class Connection : public httplib::Stream {
public:
    /// Takes over the socket, and closes it at its end.
    Connection(HttpServer& server, socket_t socket);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Waits until a request begins; false when none comes in time, or the server stops.
    bool WaitForRequest(time_t seconds);

    /// The request's head is read: from here on its body, of any length.
    void BeginBody() { headBudget_ = kNoBudget; }

    /// The client gets no answer: the connection ends here and now.
    void Cut();

    /// Ends the connection once the answer is out, for a body that nobody is going to read.
    void CloseAfterAnswer() { closeAfterAnswer_ = true; }

    /// Gives the socket to `taker`, who then owns it, once the answer is out: for answers that go
    /// on for longer than a thread is to be kept for them. What the client has sent further is
    /// dropped.
    void HandOver(std::function<void(socket_t)> taker) { taker_ = std::move(taker); }

    // httplib::Stream
    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* data, size_t size) override;
    ssize_t write(const char* data, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    ssize_t Receive(char* data, size_t size);
    void Linger();

    static constexpr std::size_t kHeadBytes = 64 * 1024;
    static constexpr std::size_t kNoBudget = static_cast<std::size_t>(-1);

    HttpServer& server_;
    socket_t socket_;
    std::unique_ptr<char[]> buffer_;
    std::size_t begin_ = 0;  ///< what is buffered
    std::size_t end_ = 0;
    std::size_t headBudget_ = kHeadBytes;
    bool closeAfterAnswer_ = false;
    std::function<void(socket_t)> taker_;
};

}  // namespace quilloservice
