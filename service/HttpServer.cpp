#include "service/HttpServer.h"

#include <sys/socket.h>

#include "service/Connection.h"
#include "service/ConnectionPool.h"

namespace quilloservice {

namespace {

constexpr int kBacklog = 512;
constexpr std::size_t kRequestsPerConnection = 10'000;
constexpr time_t kIdleSeconds = 15;
// Longer than any path that is served. The routes are regular expressions, and libstdc++'s matcher
// recurses once for each character.
constexpr std::size_t kLongestPath = 256;

thread_local Connection* t_connection = nullptr;

/// What httplib is to see of a request.
void Prepare(httplib::Request& request) {
    if (request.path.size() > kLongestPath) request.path = "/";
    // A POST without a length has no body; httplib would wait for the connection's end.
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding")) {
        request.set_header("Content-Length", "0");
    }
    // Ranges are answered by the routes that offer them, which check them against the file.
    request.ranges.clear();
}

}  // namespace

HttpServer::HttpServer() {
    new_task_queue = [] { return new ConnectionPool; };
    set_keep_alive_max_count(kRequestsPerConnection);
    set_keep_alive_timeout(kIdleSeconds);
    // httplib would set SO_REUSEPORT, with which two services could share a port unawares.
    set_socket_options([](socket_t sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });
}

int HttpServer::Bind(const std::string& host, int port) {
    int bound = port;
    if (port == 0) {
        bound = bind_to_any_port(host);
    } else if (!bind_to_port(host, port)) {
        return -1;
    }
    // httplib listens with a backlog of 5, which many clients that begin at once overflow.
    if (bound > 0) ::listen(svr_sock_, kBacklog);
    return bound;
}

void HttpServer::StopServing() {
    std::scoped_lock lock(mutex_);
    stopping_ = true;
    ::shutdown(svr_sock_, SHUT_RDWR);
    for (socket_t connection : connections_)
        ::shutdown(connection, SHUT_RD);
}

Connection& HttpServer::ThisConnection() {
    return *t_connection;
}

bool HttpServer::process_and_close_socket(socket_t sock) {
    Connection connection(*this, sock);
    t_connection = &connection;
    bool served = true;
    bool last = false;
    for (std::size_t left = keep_alive_max_count_; served && !last && left > 0; --left) {
        if (!connection.WaitForRequest(keep_alive_timeout_sec_)) break;
        served = process_request(connection, left == 1, last, [&](httplib::Request& request) {
            connection.BeginBody();
            Prepare(request);
        });
    }
    t_connection = nullptr;
    return served;
}

}  // namespace quilloservice
