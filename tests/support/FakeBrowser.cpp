#include "tests/support/FakeBrowser.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>

#include "quillocommon/Url.h"

namespace testsupport {
namespace {

constexpr std::size_t kAfterHost = std::char_traits<char>::length("http://127.0.0.1:");

}  // namespace

FakeBrowser::FakeBrowser() {
    quilloauth::SetBrowserOpener(
        [pages = pages](std::string const& url, quilloauth::BrowserFailure const& onFailure) {
            std::lock_guard lock(pages->mutex);
            pages->pages.push_back({url, onFailure});
            pages->opened.notify_all();
        });
}

FakeBrowser::~FakeBrowser() {
    quilloauth::SetBrowserOpener({});
}

FakeBrowser::Page FakeBrowser::NextPage() {
    std::unique_lock lock(pages->mutex);
    pages->opened.wait(lock, [this] { return !pages->pages.empty(); });
    auto page = std::move(pages->pages.front());
    pages->pages.pop_front();
    return page;
}

std::string FakeBrowser::Page::Parameter(std::string const& name) const {
    for (auto const& [itsName, value] : quillocommon::ParseQuery(url.substr(url.find('?') + 1)))
        if (itsName == name) return value;
    return {};
}

std::string FakeBrowser::Page::ReturnAddress(std::string const& code) const {
    return Parameter("redirect_uri") + "?code=" + code + "&state=" + Parameter("state");
}

std::string FakeBrowser::Visit(std::string const& url) {
    LocalConnection const connection(PortOf(url));
    if (!connection.IsOpen()) return {};
    connection.Say("GET " + url.substr(url.find('/', kAfterHost)) +
                   " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    return connection.ReadAll();
}

LocalConnection::LocalConnection(int port) : socket(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(port));
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket, reinterpret_cast<sockaddr*>(&place), sizeof place) != 0)
        close(std::exchange(socket, -1));
}

LocalConnection::~LocalConnection() {
    if (socket >= 0) close(socket);
}

LocalConnection::LocalConnection(LocalConnection&& other) noexcept
    : socket(std::exchange(other.socket, -1)) {}

void LocalConnection::Say(std::string const& text) const {
    for (std::size_t at = 0; at < text.size();) {
        auto const sent = send(socket, text.data() + at, text.size() - at, MSG_NOSIGNAL);
        if (sent <= 0) return;
        at += static_cast<std::size_t>(sent);
    }
}

std::string LocalConnection::ReadAll() const {
    std::string answer;
    char piece[4096];
    for (ssize_t count; (count = recv(socket, piece, sizeof piece, 0)) > 0;)
        answer.append(piece, static_cast<std::size_t>(count));
    return answer;
}

int PortOf(std::string const& url) {
    return std::stoi(url.substr(kAfterHost));
}

}  // namespace testsupport
