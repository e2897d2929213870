#pragma once

#include <memory>
#include <string>

#include "service/http/Limits.h"

namespace quilloservice::http {

class Application;

/// An HTTP/1.1 server. A few I/O threads serve all connections, so slow clients block no others;
/// work that may wait for the disk runs on worker threads. Clients that exceed the limits are
/// dropped.
class Server {
public:
    /// `application` must outlive the server.
    Server(Application& application, Limits const& limits);
    ~Server();
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    /// Listens on `host` and `port`, 0 for any free port. Returns the port, or -1 on failure.
    int Bind(std::string const& host, int port);

    /// Serves connections until `Stop`. Call once, after `Bind` has succeeded.
    void Run();

    /// Ends `Run` as soon as the requests have ended that are being received or served, however
    /// long that takes; `Stop` shortens it. Takes no new connections. Any thread, during `Run`.
    void Drain();

    /// Ends `Run`: completes the requests that have arrived, and cuts unfinished bodies and long
    /// responses. Any thread, before or during `Run`.
    void Stop();

    [[nodiscard]] std::size_t CountConnections() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

/// How many connections to allow if the process may have `descriptors` open files.
std::size_t ConnectionsWithin(std::size_t descriptors);

}  // namespace quilloservice::http
