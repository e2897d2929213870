#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "tests/service/ApiClient.h"
#include "tests/service/RawConnection.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using nlohmann::json;
using test::ApiClient;
using test::RawConnection;
using test::RunningService;
using testing::HasSubstr;
using testing::StartsWith;

class ConnectionTest : public testing::Test {
protected:
    std::string Exchange(const std::string& request) {
        RawConnection connection(service.port());
        connection.Say(request);
        connection.Finish();
        return connection.ReadAll();
    }

    RunningService service;
};

TEST_F(ConnectionTest, SurvivesWhatIsNoRequest) {
    for (const std::string& request :
         {std::string("\r\n\r\n"), std::string("GET\r\n\r\n"),
          std::string("FETCH / HTTP/1.1\r\n\r\n"), std::string("GET / HTTP/9.9\r\n\r\n"),
          std::string(1000, '\0'), std::string(200'000, 'x'),
          "GET /" + std::string(100'000, 'a') + " HTTP/1.1\r\n\r\n",
          "GET / HTTP/1.1\r\nX: " + std::string(200'000, 'a') + "\r\n\r\n",
          std::string("GET / HTTP/1.1\r\nnonsense\r\n\r\n"),
          std::string("GET /healthz HTTP/1.1\r\nRange: bytes=" + std::string(5000, '1') +
                      "\r\n\r\n")}) {
        Exchange(request);
    }
    std::string many = "GET /healthz HTTP/1.1\r\n";
    for (int i = 0; i < 20'000; ++i)
        many += "X-" + std::to_string(i) + ": y\r\n";
    EXPECT_THAT(Exchange(many + "\r\n"), testing::Not(HasSubstr(" 200 ")));
    EXPECT_THAT(Exchange("GET /healthz HTTP/1.1\r\n\r\n"), StartsWith("HTTP/1.1 200 OK"));
}

TEST_F(ConnectionTest, NeverTakesABodyForTheNextRequest) {
    std::string smuggled = "GET /healthz HTTP/1.1\r\n\r\n";
    for (const char* framing : {
             "Content-Length: 5\r\nContent-Length: 26\r\n",
             "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n",
             "Transfer-Encoding: gzip\r\n",
             "Content-Length: -5\r\n",
             "Content-Length: 0x1A\r\n",
             "Content-Length: 26\r\n",
             "Content-Length: 200000\r\n",
         }) {
        for (const char* line : {"POST /v1/me HTTP/1.1\r\n", "GET /v1/me HTTP/1.1\r\n"}) {
            std::string answer = Exchange(std::string(line) + framing + "\r\n" + smuggled);
            EXPECT_THAT(answer, StartsWith("HTTP/1.1 4")) << line << framing;
            EXPECT_THAT(answer, testing::Not(HasSubstr("200 OK"))) << line << framing;
        }
    }
}

TEST_F(ConnectionTest, AnswersRequestsInARowOnOneConnection) {
    std::string small = "POST /v1/me HTTP/1.1\r\nContent-Length: 4\r\n\r\nbody";
    std::string unframed = "POST /v1/me HTTP/1.1\r\n\r\n";
    std::string answer = Exchange(small + unframed + "GET /healthz HTTP/1.1\r\n\r\n");
    EXPECT_THAT(answer, testing::EndsWith("\r\n\r\nok"))
        << "small bodies that nobody wants are skipped";
}

TEST_F(ConnectionTest, TellsAClientThatIsStillSendingWhyItIsRefused) {
    RawConnection connection(service.port());
    connection.Say("PATCH /v1/uploads/x HTTP/1.1\r\nContent-Length: 3000000\r\n\r\n");
    connection.Say(std::string(3'000'000, 'x'));
    connection.Finish();
    EXPECT_THAT(connection.ReadAll(), HasSubstr("unauthorized"));
}

TEST_F(ConnectionTest, KeepsWhatArrivedWhenTheClientGoes) {
    ApiClient client(service.port());
    std::string upload = client.CreateUpload(1'000'000);
    auto begin = [&](const std::string& extra) {
        RawConnection connection(service.port());
        connection.Say(
            "PATCH " + upload +
            " HTTP/1.1\r\nTus-Resumable: 1.0.0\r\nUpload-Offset: 0\r\n"
            "Content-Type: application/offset+octet-stream\r\nContent-Length: 1000000\r\n" +
            extra + "Authorization: Bearer " + client.token + "\r\n\r\n" +
            std::string(70'000, 'x'));
        connection.Finish();
        connection.ReadAll();
    };
    begin("Upload-Checksum: " + test::ChecksumOf("anything") + "\r\n");
    EXPECT_EQ(client.OffsetOf(upload), "0");
    begin("");
    EXPECT_EQ(client.OffsetOf(upload), "70000");
}

TEST_F(ConnectionTest, TakesBodiesOfUnannouncedLength) {
    ApiClient client(service.port());
    std::string upload = client.CreateUpload(11);
    std::string head = "PATCH " + upload +
                       " HTTP/1.1\r\nTus-Resumable: 1.0.0\r\n"
                       "Content-Type: application/offset+octet-stream\r\n"
                       "Transfer-Encoding: chunked\r\nAuthorization: Bearer " +
                       client.token + "\r\n";
    EXPECT_THAT(Exchange(head + "Upload-Offset: 0\r\n\r\n6\r\nhello \r\n0\r\n\r\n"),
                HasSubstr("Upload-Offset: 6"));
    EXPECT_THAT(Exchange(head + "Upload-Offset: 6\r\n\r\n6\r\nworld!\r\n0\r\n\r\n"),
                HasSubstr("too_large"));
    EXPECT_THAT(Exchange(head + "Upload-Offset: 6\r\n\r\n5\r\nworld\r\n0\r\n\r\n"),
                HasSubstr("Upload-Offset: 11"));
}

TEST_F(ConnectionTest, StopsAtOnceWhileClientsKeepTheirConnectionsOpen) {
    auto brief = std::make_unique<RunningService>();
    RawConnection idle(brief->port());
    RawConnection halfway(brief->port());
    halfway.Say("POST /oauth/token HTTP/1.1\r\nContent-Length: 50\r\n\r\nhalf");
    ApiClient client(brief->port());
    brief.reset();
    EXPECT_EQ(idle.ReadAll(), "");
}

TEST_F(ConnectionTest, ServesManyClientsThatShareAtOnce) {
    constexpr int clients = 64;
    std::string stack = "5ca1ab1e-0000-4000-8000-000000000001";
    std::atomic<int> shared = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < clients; ++i) {
        threads.emplace_back([&, i] {
            try {
                ApiClient client(service.port());
                std::string content = test::Noise(200'000, static_cast<unsigned>(i));
                json asset = client.Upload(content, "take.mp4", stack);
                std::string link = client.CreateLink();
                client.AddToLink(link, asset["asset"]["id"]);
                auto movie = client.http.Get("/r/" + link + "/assets/" +
                                             asset["asset"]["id"].get<std::string>());
                if (movie && movie->body == content) ++shared;
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared, clients);
    EXPECT_EQ(ApiClient(service.port()).Upload("x", "last.mp4", stack)["version"], clients + 1);
}

class FaultTest : public testing::Test {
protected:
    const std::string content = test::Noise(500'000);
};

TEST_F(FaultTest, CutsEachUploadOnceWhereItWasTold) {
    RunningService service({.faults = {.dropUploadAfterBytes = 300'000}});
    ApiClient client(service.port());
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

TEST_F(FaultTest, DropsTheLastAnswerWhenToldToCutAtTheEnd) {
    RunningService service(
        {.faults = {.dropUploadAfterBytes = static_cast<std::int64_t>(content.size())}});
    ApiClient client(service.port());
    std::string upload = client.CreateUpload(content.size());
    EXPECT_FALSE(client.Append(upload, 0, content));
    EXPECT_EQ(client.OffsetOf(upload), "500000");
    EXPECT_EQ(client.Append(upload, content.size(), "")->status, 204);
    EXPECT_EQ(client.Get(upload + "/asset")["bytes"], content.size());
}

TEST_F(FaultTest, FailsApiRequestsOnly) {
    RunningService service({.faults = {.failRate = 1}});
    httplib::Client client("127.0.0.1", service.port());
    EXPECT_EQ(client.Get("/v1/me")->status, 500);
    EXPECT_EQ(client.Get("/healthz")->status, 200);
}

}  // namespace
}  // namespace quilloservice
