#include "quillosdk/CurlTransport.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include "moxcore/config/Error.h"

namespace {

using namespace std::chrono_literals;
using moxcore::config::ExtractResultFromException;
using quillosdk::CurlTransport;
using quillosdk::HttpRequest;

/// A server that answers every connection with the same bytes, whatever it is sent, and then ends
/// or keeps the connection.
class CannedServer {
public:
    CannedServer(std::string answer, bool keepsOpen)
        : answer(std::move(answer)),
          keepsOpen(keepsOpen),
          listener(socket(AF_INET, SOCK_STREAM, 0)) {
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
    ~CannedServer() {
        shutdown(listener, SHUT_RDWR);
        thread.join();
        close(listener);
    }
    CannedServer(CannedServer const&) = delete;
    CannedServer& operator=(CannedServer const&) = delete;

    [[nodiscard]] std::string const& Url() const { return url; }
    [[nodiscard]] int Connections() const { return connections; }

private:
    void Serve() {
        std::vector<int> open;
        for (int peer = 0; (peer = accept(listener, nullptr, nullptr)) >= 0;) {
            ++connections;
            std::string heard;
            char c = 0;
            while (!heard.ends_with("\r\n\r\n") && read(peer, &c, 1) == 1)
                heard += c;
            if (write(peer, answer.data(), answer.size()) < 0) heard.clear();
            if (keepsOpen)
                open.push_back(peer);
            else
                close(peer);
        }
        for (int const peer : open)
            close(peer);
    }

    std::string const answer;
    bool const keepsOpen;
    int const listener;
    std::string url;
    std::atomic<int> connections = 0;
    std::thread thread;
};

TEST(CurlTransport, TakesOneAnswerAsItIs) {
    CannedServer const server(
        "HTTP/1.1 103 Early Hints\r\nX-Early: 1\r\n\r\n"
        "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nx-Twice: a\r\nX-TWICE:  b \r\nEmpty:\r\n"
        "Content-Length: 4\r\n\r\nbody",
        true);
    CurlTransport transport;
    auto const response = transport.Send({.method = "GET", .url = server.Url()}).Get();
    EXPECT_EQ(response->status, 302);
    EXPECT_EQ(response->body, "body");
    EXPECT_EQ(response->headers, (quillosdk::Headers{{"LOCATION", "/elsewhere"},
                                                     {"X-TWICE", "a, b"},
                                                     {"EMPTY", ""},
                                                     {"CONTENT-LENGTH", "4"}}));
    EXPECT_EQ(server.Connections(), 1);
}

TEST(CurlTransport, FailsWithWhatWentWrong) {
    struct Row {
        char const* name;
        std::string answer;
        bool keepsOpen;
        HttpRequest request;
        std::int32_t result;
    };
    std::string const ok = "HTTP/1.1 200 OK\r\n";
    Row const rows[] = {
        {"cut in the body",
         ok + "Content-Length: 9\r\n\r\nbody",
         false,
         {},
         quillosdk::kConnectionLost},
        {"cut in the headers", ok + "Content-Le", false, {}, quillosdk::kConnectionLost},
        {"cut before all", "", false, {}, quillosdk::kConnectionLost},
        {"stalls", ok, true, {.stallTimeout = 1s}, quillosdk::kConnectionLost},
        {"too long, announced",
         ok + "Content-Length: 9\r\n\r\n123456789",
         true,
         {.maxAnswerBytes = 8},
         quillosdk::kAnswerTooLarge},
        {"too long, not announced",
         ok + "\r\n123456789",
         false,
         {.maxAnswerBytes = 8},
         quillosdk::kAnswerTooLarge},
        {"just long enough", ok + "\r\n12345678", false, {.maxAnswerBytes = 8}, 0},
        {"no HTTP", "SSH-2.0-OpenSSH\r\n\r\n", false, {}, quillosdk::kMalformedAnswer},
        {"a header of two lines",
         ok + "\r\n",
         false,
         {.headers = {{"A", "b\r\nC: d"}}},
         quillosdk::kBadRequest},
    };
    CurlTransport transport;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        CannedServer const server(row.answer, row.keepsOpen);
        auto request = row.request;
        request.method = "GET";
        request.url = server.Url();
        auto const future = transport.Send(std::move(request));
        future.Wait();
        EXPECT_EQ(ExtractResultFromException(future.GetException()), row.result);
    }
    for (char const* url : {"", "127.0.0.1", "file:///etc/hostname", "http://"}) {
        auto const future = transport.Send({.method = "GET", .url = url});
        EXPECT_EQ(ExtractResultFromException(future.GetException()), quillosdk::kBadRequest) << url;
    }
}

TEST(CurlTransport, WhatThrowsWhileABodyIsSentFailsTheRequest) {
    CannedServer const server("HTTP/1.1 200 OK\r\n\r\n", false);
    CurlTransport transport;
    auto const future =
        transport.Send({.method = "PUT",
                        .url = server.Url(),
                        .body = std::make_shared<std::string const>("body"),
                        .onBytesSent = [](std::uint64_t) { throw std::domain_error("no"); }});
    EXPECT_THROW(static_cast<void>(future.Get()), std::domain_error);
}

TEST(CurlTransport, HandsOnASuccessfulBodyAsItComesAndKeepsOthers) {
    struct Row {
        std::string answer, handedOn, kept;
    };
    for (Row const& row : {Row{"HTTP/1.1 200 OK\r\n\r\n0123456789", "0123456789", ""},
                           Row{"HTTP/1.1 404 Not Found\r\n\r\nnone", "", "none"}}) {
        CannedServer const server(row.answer, false);
        CurlTransport transport;
        std::string handedOn;
        auto const response =
            transport
                .Send({.method = "GET",
                       .url = server.Url(),
                       .maxAnswerBytes = 8,
                       .onBody = [&](std::string_view bytes) { handedOn += bytes; }})
                .Get();
        EXPECT_EQ(handedOn, row.handedOn);
        EXPECT_EQ(response->body, row.kept);
    }
}

TEST(CurlTransport, WhatThrowsWhileABodyComesEndsTheRequest) {
    CannedServer const server("HTTP/1.1 200 OK\r\n\r\nbody", true);
    CurlTransport transport;
    auto const future =
        transport.Send({.method = "GET", .url = server.Url(), .onBody = [](std::string_view) {
                            throw moxcore::async::CancelledException();
                        }});
    EXPECT_THROW(static_cast<void>(future.Get()), moxcore::async::CancelledException);
}

TEST(CurlTransport, ItsEndCancelsWhatIsUnderWayAndAllThatComesLater) {
    CannedServer const server("", true);
    CurlTransport transport;
    auto const later =
        transport.Send({.method = "GET", .url = server.Url()}).Then([&](auto const& future) {
            EXPECT_THROW(static_cast<void>(future.Get()), moxcore::async::CancelledException);
            return transport.Send({.method = "GET", .url = server.Url()});
        });
    transport.Stop();
    EXPECT_THROW(static_cast<void>(later.Get().Get()), moxcore::async::CancelledException);
}

}  // namespace
