#pragma once

#include <memory>
#include <string>

#include "service/http/Limits.h"

namespace quilloservice::http {

class Application;

/// An HTTP/1.1 server. A few threads wait for all connections at once, so that it makes no
/// difference how many clients are slow; what may wait for the disk runs on workers. Clients that
/// are slower than the limits have it are dropped.
class Server {
public:
    /// `application` outlives the server.
    Server(Application& application, Limits const& limits);
    ~Server();
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    /// Listens at `host`; `port` 0 takes any. Returns the port, or -1 when that one is not free.
    int Bind(std::string const& host, int port);

    /// Serves what comes to where `Bind` has succeeded, until `Stop`. Once.
    void Run();

    /// Ends `Run`: finishes the requests that are complete, cuts bodies and long answers that are
    /// on their way. Any thread, before or during `Run`.
    void Stop();

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

/// How many connections fit into `descriptors` open files, which are also needed for what the
/// connections are about.
std::size_t ConnectionsWithin(std::size_t descriptors);

}  // namespace quilloservice::http
