#pragma once

#include <httplib.h>

#include <mutex>
#include <set>
#include <string>

namespace quilloservice {

class Connection;

/// The HTTP server: httplib's parsing and routing over connections of our own, which read in large
/// pieces, bound what a request's head may take, can be cut on purpose, and let a stop be quick.
class HttpServer : public httplib::Server {
public:
    HttpServer();

    /// Listens at `host`; `port` 0 takes any. Returns the port, or -1 when that one is not free.
    int Bind(const std::string& host, int port);

    /// Ends `listen_after_bind`: finishes the requests that are complete, cuts bodies that are
    /// still arriving. Any thread, before or during listening.
    void StopServing();

    /// The connection of the request that this thread is answering.
    static Connection& ThisConnection();

private:
    friend class Connection;
    bool process_and_close_socket(socket_t sock) override;

    std::mutex mutex_;
    bool stopping_ = false;           // mutex_
    std::set<socket_t> connections_;  // mutex_; open for as long as they are in here
};

}  // namespace quilloservice
