#include "quillosdk/CurlTransport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>

#include "moxcore/config/Error.h"
#include "tests/support/RawServer.h"

namespace {

using namespace std::chrono_literals;
using moxcore::config::ExtractResultFromException;
using quillosdk::BodyPipe;
using quillosdk::CurlTransport;
using quillosdk::HttpRequest;
using testsupport::CannedServer;
using testsupport::Peer;
using testsupport::RawServer;

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
    std::string many;
    std::string interim;
    for (int i = 0; i < 1000; ++i) {
        many += "a:\r\n";
        interim += "HTTP/1.1 102 Processing\r\n\r\n";
    }
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
        {"many short headers", ok + many, true, {}, quillosdk::kAnswerTooLarge},
        {"interim answers without an end", interim, true, {}, quillosdk::kAnswerTooLarge},
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

/// A pipe, and a reader who waits for what comes.
struct Reader {
    std::shared_ptr<BodyPipe> const pipe = std::make_shared<BodyPipe>([this] { filled.release(); });
    std::counting_semaphore<> filled{0};
};

TEST(CurlTransport, HandsOnASuccessfulBodyAsItComesAndKeepsOthers) {
    struct Row {
        std::string answer, handedOn, kept;
    };
    for (Row const& row : {Row{"HTTP/1.1 200 OK\r\n\r\n0123456789", "0123456789", ""},
                           Row{"HTTP/1.1 404 Not Found\r\n\r\nnone", "", "none"}}) {
        CannedServer const server(row.answer, false);
        CurlTransport transport;
        Reader const reader;
        auto const response = transport
                                  .Send({.method = "GET",
                                         .url = server.Url(),
                                         .maxAnswerBytes = 8,
                                         .answerPipe = reader.pipe})
                                  .Get();
        EXPECT_EQ(reader.pipe->Take(), row.handedOn);
        EXPECT_EQ(response->body, row.kept);
    }
}

TEST(CurlTransport, AFloodHasToWaitForItsReader) {
    std::string piece(1'000'003, '\0');
    for (std::size_t i = 0; i < piece.size(); ++i)
        piece[i] = static_cast<char>(i % 251);
    constexpr std::size_t kPieces = 20;
    RawServer const server([&](Peer& peer) {
        peer.Hear("\r\n\r\n");
        peer.Say("HTTP/1.1 200 OK\r\n\r\n");
        for (std::size_t i = 0; i < kPieces; ++i)
            peer.Say(piece);
        peer.HangUp();
    });
    CurlTransport transport;
    Reader const reader;
    auto const answer =
        transport.Send({.method = "GET", .url = server.Url(), .answerPipe = reader.pipe});
    std::size_t taken = 0;
    bool isOver = false;
    while (!isOver) {
        while (!reader.pipe->IsWaitedFor() && !(isOver = answer.IsComplete()))
            std::this_thread::yield();
        auto const bytes = reader.pipe->Take();
        ASSERT_LE(bytes.size(), BodyPipe::kMostBytes);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            ASSERT_EQ(bytes[i], piece[(taken + i) % piece.size()]) << taken + i;
        taken += bytes.size();
    }
    EXPECT_EQ(taken, kPieces * piece.size());
    EXPECT_EQ(answer.Get()->status, 200);
}

TEST(CurlTransport, AClosedPipeEndsTheRequestAtOnce) {
    for (bool const isFull : {false, true}) {
        CannedServer const server(
            "HTTP/1.1 200 OK\r\n\r\n" + std::string(isFull ? 1'000'000 : 1, 'x'), true);
        CurlTransport transport;
        Reader reader;
        auto const future =
            transport.Send({.method = "GET", .url = server.Url(), .answerPipe = reader.pipe});
        reader.filled.acquire();
        while (isFull && !reader.pipe->IsWaitedFor())
            std::this_thread::yield();
        reader.pipe->Close();
        EXPECT_THROW(static_cast<void>(future.Get()), moxcore::async::CancelledException);
    }
}

/// A clock that the test turns.
class TurnedClock {
public:
    [[nodiscard]] CurlTransport::Clock Get() const {
        return [seconds = seconds] {
            return std::chrono::steady_clock::time_point(std::chrono::seconds(*seconds));
        };
    }
    void AdvanceBy(int by) { *seconds += by; }

private:
    std::shared_ptr<std::atomic<int>> const seconds = std::make_shared<std::atomic<int>>(1000);
};

TEST(CurlTransport, GivesUpWhatIsTooSlow) {
    std::string const ok = "HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n";
    struct Row {
        char const* name;
        std::string answer;  // of which no more comes
        std::uint64_t slowestRate;
        int patience;  // in seconds
    };
    Row const rows[] = {
        {"a slow answer", ok + "x", 1024, 30},
        {"a slow head", "HTTP/1.1 200 OK\r\n", 1024, 30},
        {"an answer that may be slow", ok + "x", 0, 45},
        {"none yet", "HTTP/1.1 102 Processing\r\n\r\n", 1024, 45},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        TurnedClock clock;
        std::binary_semaphore said{0};
        RawServer const server([&](Peer& peer) {
            peer.Hear("\r\n\r\n");
            peer.Say(row.answer);
            said.release();
        });
        CannedServer const other("HTTP/1.1 204 No Content\r\n\r\n", false);
        CurlTransport transport(clock.Get());
        auto const future = transport.Send({.method = "GET",
                                            .url = server.Url(),
                                            .stallTimeout = 45s,
                                            .slowestRate = row.slowestRate});
        said.acquire();
        auto const haveItLook = [&] {
            for (int i = 0; i < 2; ++i)
                static_cast<void>(transport.Send({.method = "GET", .url = other.Url()}).Get());
        };
        haveItLook();
        clock.AdvanceBy(row.patience - 1);
        haveItLook();
        EXPECT_FALSE(future.IsComplete());
        clock.AdvanceBy(1);
        haveItLook();
        future.Wait();
        EXPECT_EQ(ExtractResultFromException(future.GetException()), quillosdk::kConnectionLost);
    }
}

TEST(CurlTransport, ABodyThatNobodyTakesIsGivenUp) {
    TurnedClock clock;
    std::binary_semaphore heard{0};
    RawServer const server([&](Peer& peer) {
        peer.Hear("\r\n\r\n");
        heard.release();
    });
    CannedServer const other("HTTP/1.1 204 No Content\r\n\r\n", false);
    CurlTransport transport(clock.Get());
    auto const future =
        transport.Send({.method = "PATCH",
                        .url = server.Url(),
                        .body = std::make_shared<std::string const>(std::size_t{64} << 20, 'x')});
    heard.acquire();
    while (!future.IsComplete()) {
        clock.AdvanceBy(60);
        static_cast<void>(transport.Send({.method = "GET", .url = other.Url()}).Get());
    }
    EXPECT_EQ(ExtractResultFromException(future.GetException()), quillosdk::kConnectionLost);
}

/// A connection that has served a request is closed without an answer to the next one.
TEST(CurlTransport, SendsABodyOnceWhateverBecomesOfTheConnection) {
    struct Row {
        char const* method;
        std::size_t bodyBytes;
        std::size_t heardBytes;  // until the server hangs up
        std::int32_t result;     // 0: it is sent again, and answered
        std::size_t sent;        // how often
    };
    constexpr std::size_t kMegabyte = std::size_t{1} << 20;
    Row const rows[] = {
        {"PATCH", 8 * kMegabyte, 8 * kMegabyte, quillosdk::kConnectionLost, 1},
        {"PATCH", 8 * kMegabyte, 1, quillosdk::kConnectionLost, 1},
        {"POST", 10, 10, quillosdk::kConnectionLost, 1},
        {"POST", 0, 0, quillosdk::kConnectionLost, 1},
        {"GET", 0, 0, 0, 2},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.method);
        std::atomic<std::size_t> heads = 0;
        std::atomic<std::size_t> heard = 0;
        RawServer const server([&](Peer& peer) {
            auto const head = peer.Hear("\r\n\r\n");
            if (!head.starts_with("HEAD ")) {  // what is sent again
                if (!head.empty()) ++heads;
                heard += peer.HearBytes(row.bodyBytes);
                peer.Say("HTTP/1.1 204 No Content\r\n\r\n");
                return;
            }
            peer.Say("HTTP/1.1 204 No Content\r\n\r\n");
            if (!peer.Hear("\r\n\r\n").empty()) ++heads;
            heard += peer.HearBytes(row.heardBytes);
            peer.HangUp();
        });
        CurlTransport transport;
        static_cast<void>(transport.Send({.method = "HEAD", .url = server.Url()}).Get());
        HttpRequest request{.method = row.method, .url = server.Url()};
        if (row.bodyBytes > 0)
            request.body = std::make_shared<std::string const>(row.bodyBytes, 'x');
        auto const future = transport.Send(std::move(request));
        future.Wait();
        EXPECT_EQ(ExtractResultFromException(future.GetException()), row.result);
        EXPECT_EQ(heads, row.sent);
        EXPECT_EQ(heard, row.heardBytes);
    }
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
