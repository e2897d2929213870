#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <set>

namespace quillosdk {

/// The sockets of curl's connections, which curl itself does not tell of while they are in use.
/// Must outlive the connections. One thread.
class CurlSockets {
public:
    CurlSockets() = default;
    CurlSockets(CurlSockets const&) = delete;
    CurlSockets& operator=(CurlSockets const&) = delete;

    /// Has the connections that `handle` makes be among these. No program that is started later
    /// inherits them.
    void SetUp(CURL* handle);

    /// The one at the port `localPort` of this machine; CURL_SOCKET_BAD when there is none.
    [[nodiscard]] curl_socket_t At(int localPort) const;

    /// How many bytes the system has taken for `socket` that the other side has not acknowledged.
    [[nodiscard]] static std::uint64_t Unacknowledged(curl_socket_t socket);

private:
    static curl_socket_t OnOpen(void* self, curlsocktype purpose, curl_sockaddr* address);
    static int OnClose(void* self, curl_socket_t socket);

    std::set<curl_socket_t> open;
};

}  // namespace quillosdk
