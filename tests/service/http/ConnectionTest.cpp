#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RawConnection.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using nlohmann::json;
using test::ApiClient;
using test::RawConnection;
using test::RunningService;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string const kHealth = "GET /healthz HTTP/1.1\r\nHost: x\r\n\r\n";

class ConnectionTest : public testing::Test {
protected:
    std::string Exchange(std::string const& request) {
        RawConnection connection(service.GetPort());
        connection.Send(request);
        connection.EndOutput();
        return connection.ReadAll();
    }

    RunningService service;
};

TEST_F(ConnectionTest, SurvivesMalformedInput) {
    for (std::string const& request :
         {std::string("\r\n\r\n"), std::string(1000, '\0'), std::string(200'000, 'x'),
          "GET / HTTP/1.1\r\nX: " + std::string(200'000, 'a') + "\r\n\r\n",
          std::string("GET / HTTP/1.1\r\nnonsense\r\n\r\n")}) {
        Exchange(request);
    }
    std::string many = "GET /healthz HTTP/1.1\r\n";
    for (int i = 0; i < 20'000; ++i)
        many += "X-" + std::to_string(i) + ": y\r\n";
    EXPECT_THAT(Exchange(many + "\r\n"), StartsWith("HTTP/1.1 431 "));
    EXPECT_THAT(Exchange(kHealth), StartsWith("HTTP/1.1 200 OK\r\nDate: "));
}

TEST_F(ConnectionTest, NeverParsesABodyAsARequest) {
    std::string const length = "Content-Length: " + std::to_string(kHealth.size()) + "\r\n";
    std::string const token =
        "Authorization: Bearer " + ApiClient(service.GetPort()).token + "\r\n";
    for (std::string const& head : std::vector<std::string>{
             // Ambiguous framing.
             "POST /v1/me HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\n" + length,
             "POST /v1/me HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\nTransfer-Encoding: "
             "chunked\r\n",
             "POST /v1/me HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: gzip\r\n",
             "POST /v1/me HTTP/1.1\r\nHost: x\r\nContent-Length: -5\r\n",
             "GET /v1/me HTTP/1.1\r\nHost: x\r\nContent-Length: 200000\r\n",
             // Requests with a body that are refused at different points.
             "GET /v1/me HTTP/1.1\r\nHost: x\r\n" + length,
             "POST /v1/me HTTP/1.1\r\nHost: x\r\n" + token + length,
             "GET /" + std::string(9000, 'a') + " HTTP/1.1\r\nHost: x\r\n" + length,
             "FETCH / HTTP/1.1\r\nHost: x\r\n" + length,
             "TRACE / HTTP/1.1\r\nHost: x\r\n" + length,
             "CONNECT x:1 HTTP/1.1\r\nHost: x\r\n" + length,
             "DELETE /v1/accounts HTTP/1.1\r\nHost: x\r\n" + token + length,
             "POST / HTTP/1.1\r\nHost: x\r\nX: " + std::string(9000, 'a') + "\r\n" + length,
             "POST /none HTTP/1.1\r\nHost: x\r\nRange: nonsense\r\n" + length,
             "POST / HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\n" + length,
             "PATCH /v1/uploads/x HTTP/1.1\r\nHost: x\r\n" + token + length,
             "POST /v1/uploads HTTP/1.1\r\nHost: x\r\nContent-Encoding: gzip\r\n" + token + length,
         }) {
        std::string answer = Exchange(head + "\r\n" + kHealth);
        EXPECT_THAT(answer, AnyOf(StartsWith("HTTP/1.1 4"), StartsWith("HTTP/1.1 5"))) << head;
        EXPECT_THAT(answer, Not(HasSubstr("200 OK"))) << head.substr(0, 200);
        // Data after such a body is a request only if the body's end is unambiguous.
        answer = Exchange(head + "\r\n" + kHealth + kHealth);
        auto healthy = answer.find("200 OK");
        EXPECT_TRUE(healthy == std::string::npos ||
                    answer.find("200 OK", healthy + 1) == answer.npos)
            << head.substr(0, 200);
    }
}

TEST_F(ConnectionTest, RespondsWithoutReadingALargeBody) {
    for (char const* request : {"DELETE /v1/accounts", "FETCH /v1/me", "PUT /v1/me",
                                "PATCH /v1/uploads/x", "POST /v1/accounts", "GET /healthz"}) {
        for (char const* framing : {"Content-Length: 2000000000", "Transfer-Encoding: chunked"}) {
            RawConnection connection(service.GetPort());
            connection.Send(std::string(request) + " HTTP/1.1\r\nHost: x\r\n" + framing +
                            "\r\n\r\n");
            // The response does not wait for the body.
            std::string head = connection.ReadTo("\r\n\r\n");
            EXPECT_THAT(head, HasSubstr("Connection: close\r\n")) << request << framing;
            EXPECT_THAT(head, StartsWith(std::string(request).starts_with("GET") ? "HTTP/1.1 200 "
                                                                                 : "HTTP/1.1 401 "))
                << request << framing;
        }
    }
}

TEST_F(ConnectionTest, SendsContinueOnlyIfItReadsTheBody) {
    ApiClient client(service.GetPort());
    auto begin = [&](RawConnection const& connection, std::string const& name) {
        connection.Send("POST /v1/accounts HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\n" + name +
                        ": Bearer " + client.token + "\r\nContent-Length: 13\r\n\r\n");
        return connection.ReadTo("\r\n\r\n");
    };
    RawConnection refused(service.GetPort());
    EXPECT_THAT(begin(refused, "X"), StartsWith("HTTP/1.1 401 "));
    RawConnection welcome(service.GetPort());
    EXPECT_EQ(begin(welcome, "Authorization"), "HTTP/1.1 100 Continue\r\n\r\n");
    welcome.Send("{\"name\":\"new\"}");
    EXPECT_THAT(welcome.ReadTo("\r\n\r\n"), StartsWith("HTTP/1.1 400 "))
        << "the body has 14 bytes, announced are 13";
}

TEST_F(ConnectionTest, DropsSlowClients) {
    constexpr std::chrono::milliseconds soon(20);
    RunningService strict({.http = {.head = soon,
                                    .idle = soon,
                                    .linger = soon,
                                    .pace = {.bytesPerSecond = 1 << 20, .average = soon}}});
    RawConnection silent(strict.GetPort());
    RawConnection halfway(strict.GetPort());
    halfway.Send("GET /healthz HT");
    RawConnection idle(strict.GetPort());
    idle.Send(kHealth);
    RawConnection body(strict.GetPort());
    body.Send("POST /oauth/token HTTP/1.1\r\nHost: x\r\nContent-Length: 50\r\n\r\nhalf");
    RawConnection lingering(strict.GetPort());
    lingering.Send("nonsense\r\n\r\n");
    // Each reads until the service closes the connection.
    EXPECT_EQ(silent.ReadAll(), "");
    EXPECT_EQ(halfway.ReadAll(), "");
    EXPECT_THAT(idle.ReadAll(), EndsWith("ok"));
    EXPECT_EQ(body.ReadAll(), "");
    EXPECT_THAT(lingering.ReadAll(), StartsWith("HTTP/1.1 400 "));
}

TEST_F(ConnectionTest, ANewerPatchTakesOverFromAStalledOne) {
    ApiClient client(service.GetPort());
    std::string upload = client.CreateUpload(100'000);
    RawConnection stalled(service.GetPort());
    stalled.Send("PATCH " + upload +
                 " HTTP/1.1\r\nHost: x\r\nTus-Resumable: 1.0.0\r\nUpload-Offset: 0\r\n"
                 "Content-Type: application/offset+octet-stream\r\nContent-Length: 100000\r\n"
                 "Expect: 100-continue\r\nAuthorization: Bearer " +
                 client.token + "\r\n\r\n");
    ASSERT_THAT(stalled.ReadTo("\r\n\r\n"), HasSubstr(" 100 ")) << "it holds the upload";
    stalled.Send("half of it");
    std::string content = test::Noise(100'000);
    EXPECT_EQ(client.Append(upload, 0, content)->status, 204);
    EXPECT_THAT(stalled.ReadAll(), Not(HasSubstr(" 204 "))) << "its connection is cut";
    EXPECT_EQ(client.Get(upload + "/asset")["sha256"], ToHex(Sha256(content)));
}

TEST_F(ConnectionTest, ServesPipelinedRequests) {
    std::string small = "POST /v1/me HTTP/1.1\r\nHost: x\r\nContent-Length: 4\r\n\r\nbody";
    std::string unframed = "POST /v1/me HTTP/1.1\r\nHost: x\r\n\r\n";
    std::string many;
    for (int i = 0; i < 200; ++i)
        many += kHealth;
    std::string answer = Exchange(small + unframed + many);
    EXPECT_THAT(answer, EndsWith("\r\n\r\nok")) << "small unread bodies are skipped";
}

TEST_F(ConnectionTest, DeliversTheErrorToAClientThatIsStillSending) {
    RawConnection connection(service.GetPort());
    connection.Send("PATCH /v1/uploads/x HTTP/1.1\r\nHost: x\r\nContent-Length: 3000000\r\n\r\n");
    connection.Send(std::string(3'000'000, 'x'));
    connection.EndOutput();
    EXPECT_THAT(connection.ReadAll(), HasSubstr("unauthorized"));
}

TEST_F(ConnectionTest, KeepsThePartialBodyOfADisconnectedClient) {
    ApiClient client(service.GetPort());
    std::string upload = client.CreateUpload(1'000'000);
    auto begin = [&](std::string const& extra) {
        RawConnection connection(service.GetPort());
        connection.Send(
            "PATCH " + upload +
            " HTTP/1.1\r\nHost: x\r\nTus-Resumable: 1.0.0\r\nUpload-Offset: 0\r\n"
            "Content-Type: application/offset+octet-stream\r\nContent-Length: 1000000\r\n" +
            extra + "Authorization: Bearer " + client.token + "\r\n\r\n" +
            std::string(70'000, 'x'));
        connection.EndOutput();
        connection.ReadAll();
    };
    begin("Upload-Checksum: " + test::ChecksumOf("anything") + "\r\n");
    EXPECT_EQ(client.OffsetOf(upload), "0");
    begin("");
    EXPECT_EQ(client.OffsetOf(upload), "70000");
}

TEST_F(ConnectionTest, AcceptsChunkedBodies) {
    ApiClient client(service.GetPort());
    std::string upload = client.CreateUpload(11);
    std::string head = "PATCH " + upload +
                       " HTTP/1.1\r\nHost: x\r\nTus-Resumable: 1.0.0\r\n"
                       "Content-Type: application/offset+octet-stream\r\n"
                       "Transfer-Encoding: chunked\r\nAuthorization: Bearer " +
                       client.token + "\r\n";
    EXPECT_THAT(Exchange(head + "Upload-Offset: 0\r\n\r\n6\r\nhello \r\n0\r\n\r\n"),
                HasSubstr("Upload-Offset: 6"));
    EXPECT_THAT(Exchange(head + "Upload-Offset: 6\r\n\r\n6\r\nworld!\r\n0\r\n\r\n"),
                HasSubstr("too_large"));
    EXPECT_THAT(Exchange(head + "Upload-Offset: 6\r\n\r\n5\r\nworld\r\n0\r\n\r\n"),
                HasSubstr("Upload-Offset: 11"));
    // A chunked body that is read as a whole is limited, too.
    EXPECT_THAT(
        Exchange("POST /oauth/token HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n"
                 "fffff\r\n" +
                 std::string(0xfffff, 'x') + "\r\n0\r\n\r\n"),
        StartsWith("HTTP/1.1 413 "));
}

TEST_F(ConnectionTest, StopsWithOpenConnections) {
    auto brief = std::make_unique<RunningService>();
    RawConnection idle(brief->GetPort());
    RawConnection halfway(brief->GetPort());
    halfway.Send("POST /oauth/token HTTP/1.1\r\nHost: x\r\nContent-Length: 50\r\n\r\nhalf");
    ApiClient client(brief->GetPort());
    brief.reset();
    EXPECT_EQ(idle.ReadAll(), "");
}

TEST_F(ConnectionTest, ServesConcurrentShares) {
    constexpr int kClients = 64;
    std::string stack = "5ca1ab1e-0000-4000-8000-000000000001";
    std::atomic<int> shared = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kClients; ++i) {
        threads.emplace_back([&, i] {
            try {
                ApiClient client(service.GetPort());
                std::string content = test::Noise(200'000, static_cast<unsigned>(i));
                json asset = client.Upload(content, "take.mp4", stack);
                std::string link = client.CreateLink();
                client.AddToLink(link, asset["asset"]["id"]);
                auto movie = client.http.Get("/r/" + link + "/assets/" +
                                             asset["asset"]["id"].get<std::string>());
                if (movie && movie->body == content) ++shared;
            } catch (std::exception const& error) {
                ADD_FAILURE() << error.what();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared, kClients);
    EXPECT_EQ(ApiClient(service.GetPort()).Upload("x", "last.mp4", stack)["version"], kClients + 1);
}

class FaultTest : public testing::Test {
protected:
    std::string const content = test::Noise(500'000);
};

TEST_F(FaultTest, CutsEachUploadOnce) {
    RunningService service({.faults = {.dropUploadAfterBytes = 300'000}});
    ApiClient client(service.GetPort());
    for (bool checked : {false, true}) {
        httplib::Headers headers;
        if (checked) headers.emplace("Upload-Checksum", test::ChecksumOf(content));
        std::string upload = client.CreateUpload(content.size());
        EXPECT_FALSE(client.Append(upload, 0, content, headers));
        std::string offset = checked ? "0" : "300000";
        EXPECT_EQ(client.OffsetOf(upload), offset);
        if (!checked) headers.clear();
        std::size_t start = std::stoul(offset);
        EXPECT_EQ(client.Append(upload, start, content.substr(start), headers)->status, 204);
    }
}

TEST_F(FaultTest, DropsTheLastResponseForACutAtTheEnd) {
    RunningService service(
        {.faults = {.dropUploadAfterBytes = static_cast<std::int64_t>(content.size())}});
    ApiClient client(service.GetPort());
    std::string upload = client.CreateUpload(content.size());
    EXPECT_FALSE(client.Append(upload, 0, content));
    EXPECT_EQ(client.OffsetOf(upload), "500000");
    EXPECT_EQ(client.Append(upload, content.size(), "")->status, 204);
    EXPECT_EQ(client.Get(upload + "/asset")["bytes"], content.size());
}

TEST_F(FaultTest, FailsApiRequestsOnly) {
    RunningService service({.faults = {.failRate = 1}});
    httplib::Client client("127.0.0.1", service.GetPort());
    EXPECT_EQ(client.Get("/v1/me")->status, 500);
    EXPECT_EQ(client.Get("/healthz")->status, 200);
}

}  // namespace
}  // namespace quilloservice
