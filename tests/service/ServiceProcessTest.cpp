#include "tests/service/ServiceProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RawConnection.h"
#include "tests/service/TempDirectory.h"

namespace quilloservice {
namespace {

using nlohmann::json;
using test::ApiClient;
using test::RawConnection;
using test::ServiceProcess;
using testing::HasSubstr;

class ServiceProcessTest : public testing::Test {
protected:
    std::vector<std::string> Arguments(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"--data", directory.GetPath(), "--trust-local-user"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    /// Sends a PATCH for all of `content`, but only the first `size` bytes of the body.
    static void Begin(ApiClient const& client, int port, std::string const& upload,
                      std::string_view content, std::size_t size) {
        RawConnection connection(port);
        connection.Send("PATCH " + upload +
                        " HTTP/1.1\r\nHost: x\r\nTus-Resumable: 1.0.0\r\nUpload-Offset: 0\r\n"
                        "Content-Type: application/offset+octet-stream\r\nContent-Length: " +
                        std::to_string(content.size()) + "\r\nAuthorization: Bearer " +
                        client.token + "\r\n\r\n");
        connection.Send(content.substr(0, size));
    }

    test::TempDirectory directory;
};

TEST_F(ServiceProcessTest, ListsOnlyWholeMoviesAfterACrash) {
    std::string const content = test::Noise(24'000'000);
    std::string const sha256 = ToHex(Sha256(content));
    // The last rows are killed during the publication.
    for (std::size_t sent : {1ul, 100'000ul, 9'000'000ul, 20'000'000ul, 23'999'999ul, 24'000'000ul,
                             24'000'000ul, 24'000'000ul}) {
        std::string upload;
        std::size_t listed = 0;
        {
            ServiceProcess process(Arguments());
            ApiClient client(process.GetPort());
            listed = client.Get("/v1/folders/" + client.folder + "/children")["assets"].size();
            upload = client.CreateUpload(content.size());
            Begin(client, process.GetPort(), upload, content, sent);
        }
        ServiceProcess process(Arguments());
        ApiClient client(process.GetPort());
        std::size_t offset = std::stoul(client.OffsetOf(upload));
        std::size_t listedNow =
            client.Get("/v1/folders/" + client.folder + "/children")["assets"].size();
        EXPECT_LE(offset, sent);
        EXPECT_EQ(listedNow, listed + (offset == content.size() ? 1 : 0));
        auto rest = client.Append(upload, offset, content.substr(offset),
                                  {{"Quillo-Content-SHA256", sha256}});
        ASSERT_TRUE(rest) << httplib::to_string(rest.error());
        EXPECT_EQ(rest->status, 204);
        json asset = client.Get(upload + "/asset");
        EXPECT_EQ(asset["sha256"], sha256);
        std::string link = client.CreateLink();
        client.AddToLink(link, asset["asset"]["id"]);
        auto movie =
            client.http.Get("/r/" + link + "/assets/" + asset["asset"]["id"].get<std::string>());
        EXPECT_TRUE(movie->body == content);
    }
}

TEST_F(ServiceProcessTest, RefusesUploadsOnAFullDisk) {
    std::string const content = test::Noise(12'000'000);
    std::string upload;
    {
        ServiceProcess process(Arguments(), [] {
            rlimit limit{8'000'000, 8'000'000};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        });
        ApiClient client(process.GetPort());
        upload = client.CreateUpload(content.size());
        auto checked =
            client.Append(upload, 0, content, {{"Upload-Checksum", test::ChecksumOf(content)}});
        EXPECT_EQ(checked->status, 507);
        EXPECT_EQ(client.OffsetOf(upload), "0");
        auto plain = client.Append(upload, 0, content);
        EXPECT_EQ(plain->status, 507);
        EXPECT_THAT(plain->body, HasSubstr("disk is full"));
        EXPECT_EQ(client.Upload("small")["bytes"], 5);
    }
    ServiceProcess process(Arguments());
    ApiClient client(process.GetPort());
    std::size_t offset = std::stoul(client.OffsetOf(upload));
    EXPECT_GT(offset, 0u);
    client.Append(upload, offset, content.substr(offset));
    EXPECT_EQ(client.Get(upload + "/asset")["sha256"], ToHex(Sha256(content)));
}

TEST_F(ServiceProcessTest, KeepsPortAndSessionsAcrossARestart) {
    std::string token;
    int port = 0;
    for (int signal : {SIGTERM, SIGINT}) {
        ServiceProcess process(Arguments());
        EXPECT_TRUE(port == 0 || process.GetPort() == port);
        port = process.GetPort();
        ApiClient client(port);
        if (!token.empty()) {
            client.token = token;
            EXPECT_EQ(client.Send("GET", "/v1/me")->status, 200);
        }
        token = client.token;
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), 0);
    }
    // Another service takes the port.
    test::TempDirectory other;
    ServiceProcess squatter({"--data", other.GetPath(), "--port", std::to_string(port)});
    ASSERT_EQ(squatter.GetPort(), port);
    ServiceProcess process(Arguments());
    EXPECT_NE(process.GetPort(), 0);
    EXPECT_NE(process.GetPort(), port);
    process.Signal(SIGTERM);
    process.Wait();
    ServiceProcess again(Arguments({"--port", std::to_string(port)}));
    EXPECT_EQ(again.Wait(), 1);
    EXPECT_THAT(again.ReadErrors(), HasSubstr("cannot listen"));
}

TEST_F(ServiceProcessTest, DrainsUntilTheLastRequestHasEndedOrASecondSignal) {
    for (bool isPatient : {true, false}) {
        ServiceProcess process(Arguments({"--drain", "3600"}));
        ApiClient client(process.GetPort());
        std::string const upload = client.CreateUpload(10);
        RawConnection const idle(process.GetPort());
        idle.Send("GET /healthz HTTP/1.1\r\nHost: x\r\n\r\n");
        EXPECT_THAT(idle.ReadTo("ok"), HasSubstr("200 OK"));
        RawConnection const busy(process.GetPort());
        busy.Send("PATCH " + upload +
                  " HTTP/1.1\r\nHost: x\r\nTus-Resumable: 1.0.0\r\nUpload-Offset: 0\r\n"
                  "Content-Type: application/offset+octet-stream\r\nContent-Length: 10\r\n"
                  "Expect: 100-continue\r\nAuthorization: Bearer " +
                  client.token + "\r\n\r\n");
        EXPECT_THAT(busy.ReadTo("\r\n\r\n"), HasSubstr("100 Continue"));
        busy.Send("12345");
        process.Signal(SIGTERM);
        EXPECT_EQ(idle.ReadAll(), "") << "its connection ends";
        if (isPatient) {
            busy.Send("67890");
            std::string const answer = busy.ReadAll();
            EXPECT_THAT(answer, testing::StartsWith("HTTP/1.1 204 "));
            EXPECT_THAT(answer, HasSubstr("Connection: close"));
        } else {
            process.Signal(SIGTERM);
        }
        EXPECT_EQ(process.Wait(), 0);
        ServiceProcess again(Arguments());
        EXPECT_EQ(ApiClient(again.GetPort()).OffsetOf(upload), isPatient ? "10" : "5");
    }
}

TEST_F(ServiceProcessTest, StopsWithStandardInput) {
    ServiceProcess process(Arguments({"--stop-with-stdin"}));
    EXPECT_NE(process.GetPort(), 0);
    process.CloseStdin();
    EXPECT_EQ(process.Wait(), 0);
}

TEST_F(ServiceProcessTest, RefusesADirectoryInUse) {
    ServiceProcess first(Arguments());
    ServiceProcess second(Arguments());
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_THAT(second.ReadErrors(), HasSubstr("another quillo-service is running on"));
    EXPECT_EQ(ApiClient(first.GetPort()).Send("GET", "/v1/me")->status, 200);
}

TEST_F(ServiceProcessTest, ChecksItsArguments) {
    ServiceProcess wrong({"--dta", "x"});
    EXPECT_EQ(wrong.Wait(), 2);
    EXPECT_EQ(wrong.ReadErrors(),
              "quillo-service: unknown argument \"--dta\"; --help lists the known ones\n");

    ServiceProcess distrustful({"--data", directory.GetPath()});
    httplib::Client client("127.0.0.1", distrustful.GetPort());
    auto result =
        client.Post("/oauth/token", "client_id=x&grant_type=urn:quillo:grant-type:local-user",
                    "application/x-www-form-urlencoded");
    EXPECT_EQ(result->status, 400);
    EXPECT_THAT(result->body, HasSubstr("unauthorized_client"));
}

}  // namespace
}  // namespace quilloservice
