#include "quillosdk/CurlSockets.h"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace quillosdk {
namespace {

/// What the system takes of a body beyond what it has sent. Without a limit it is megabytes, and
/// nobody could tell a line that is full from one that stands idle.
constexpr int kMostUnsentBytes = 512 * 1024;

/// 0 when there is none.
int LocalPort(curl_socket_t socket) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) return 0;
    if (address.ss_family == AF_INET)
        return ntohs(reinterpret_cast<sockaddr_in const&>(address).sin_port);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<sockaddr_in6 const&>(address).sin6_port);
    return 0;
}

}  // namespace

void CurlSockets::SetUp(CURL* handle) {
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, &CurlSockets::OnOpen);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(handle, CURLOPT_CLOSESOCKETFUNCTION, &CurlSockets::OnClose);
    curl_easy_setopt(handle, CURLOPT_CLOSESOCKETDATA, this);
}

curl_socket_t CurlSockets::At(int localPort) const {
    auto const found = std::find_if(open.begin(), open.end(), [localPort](curl_socket_t each) {
        return LocalPort(each) == localPort;
    });
    return found == open.end() ? CURL_SOCKET_BAD : *found;
}

std::uint64_t CurlSockets::Unacknowledged(curl_socket_t socket) {
    int bytes = 0;
    if (socket == CURL_SOCKET_BAD || ioctl(socket, SIOCOUTQ, &bytes) != 0) return 0;
    return static_cast<std::uint64_t>(std::max(bytes, 0));
}

curl_socket_t CurlSockets::OnOpen(void* self, curlsocktype, curl_sockaddr* address) {
    int const made = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    if (made < 0) return CURL_SOCKET_BAD;
    // In vain for what is no TCP socket.
    setsockopt(made, IPPROTO_TCP, TCP_NOTSENT_LOWAT, &kMostUnsentBytes, sizeof kMostUnsentBytes);
    try {
        static_cast<CurlSockets*>(self)->open.insert(made);
    } catch (...) {  // must not pass through curl
        close(made);
        return CURL_SOCKET_BAD;
    }
    return made;
}

int CurlSockets::OnClose(void* self, curl_socket_t socket) {
    static_cast<CurlSockets*>(self)->open.erase(socket);
    return close(socket);
}

}  // namespace quillosdk
