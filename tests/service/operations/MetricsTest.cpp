#include "service/operations/Metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/service/ApiClient.h"
#include "tests/service/RawConnection.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using std::chrono::milliseconds;
using test::ApiClient;
using test::RunningService;
using testing::HasSubstr;
using testing::Not;

TEST(Metrics, CountEachExchangeOnce) {
    Metrics metrics;
    http::Exchange exchange;
    exchange.request.method = "GET";
    exchange.route = "/r/{id}";
    metrics.Count(exchange, {milliseconds(5), 0, 100, true});
    metrics.Count(exchange, {milliseconds(6), 7, 50, true});
    metrics.Count(exchange, {std::chrono::minutes(1), 0, 10, false});
    exchange.route = "";
    exchange.request.method = "ANYTHING\"}";
    exchange.response.status = 405;
    metrics.Count(exchange, {milliseconds(0), 0, 0, true});

    std::string const text = metrics.Render({3, 1'000'000'007, true});
    std::string expected = R"(# HELP quillo_http_requests_total Requests that have ended.
# TYPE quillo_http_requests_total counter
quillo_http_requests_total{method="",route="",status="405"} 1
quillo_http_requests_total{method="GET",route="/r/{id}",status="200"} 3
)";
    EXPECT_THAT(text, testing::StartsWith(expected));
    expected = "# TYPE quillo_http_request_duration_seconds histogram\n";
    for (auto const& [route, counts, sum] :
         std::vector<std::tuple<char const*, std::vector<int>, char const*>>{
             {"", {1, 1, 1}, "0"}, {"/r/{id}", {1, 2, 3}, "60.011"}}) {
        std::string const name = "quillo_http_request_duration_seconds";
        std::string const label = "{route=\"" + std::string(route) + "\"";
        for (char const* bound : {"0.005", "0.01", "0.025", "0.05", "0.1", "0.25", "0.5", "1",
                                  "2.5", "5", "10", "30", "+Inf"}) {
            int const count = counts[bound == std::string("0.005") ? 0 : *bound == '+' ? 2 : 1];
            expected +=
                name + "_bucket" + label + ",le=\"" + bound + "\"} " + std::to_string(count) + "\n";
        }
        expected += name + "_sum" + label + "} " + sum + "\n" + name + "_count" + label + "} " +
                    std::to_string(counts.back()) + "\n";
    }
    EXPECT_THAT(text, HasSubstr(expected));
    EXPECT_THAT(text, testing::EndsWith(R"(
# HELP quillo_http_received_bytes_total Bytes of the requests' bodies.
# TYPE quillo_http_received_bytes_total counter
quillo_http_received_bytes_total 7
# HELP quillo_http_sent_bytes_total Bytes of the responses.
# TYPE quillo_http_sent_bytes_total counter
quillo_http_sent_bytes_total 160
# HELP quillo_http_cut_total Requests whose connection ended before the response did.
# TYPE quillo_http_cut_total counter
quillo_http_cut_total 1
# HELP quillo_http_connections Open connections, without event streams.
# TYPE quillo_http_connections gauge
quillo_http_connections 3
# HELP quillo_data_free_bytes Free space on the disk of the movies.
# TYPE quillo_data_free_bytes gauge
quillo_data_free_bytes 1000000007
# HELP quillo_store_reachable 1 if the records can be read.
# TYPE quillo_store_reachable gauge
quillo_store_reachable 1
)"));
}

TEST(Operations, ShowFiguresWithoutWhatIsPrivateToThisMachineOnly) {
    RunningService service;
    ApiClient client(service.GetPort());
    std::string const link = client.CreateLink();
    EXPECT_EQ(client.http.Get("/r/" + link)->status, 200);
    EXPECT_EQ(client.http.Get("/r/nothing")->status, 404);
    std::string const text = client.http.Get("/metrics")->body;
    EXPECT_THAT(text, HasSubstr(R"({method="GET",route="/r/{id}",status="200"} 1)"));
    EXPECT_THAT(text, HasSubstr(R"({method="GET",route="/r/{rest}",status="404"} 1)"));
    EXPECT_THAT(text, HasSubstr("quillo_store_reachable 1\n"));
    EXPECT_THAT(text, Not(HasSubstr(link)));
    for (httplib::Headers const& headers :
         std::vector<httplib::Headers>{{{"X-Forwarded-For", "192.0.2.1"}},
                                       {{"Forwarded", "for=192.0.2.1"}},
                                       {{"Host", "review.example"}},
                                       {{"Origin", "https://review.example"}}}) {
        EXPECT_EQ(client.http.Get("/metrics", headers)->status, 404) << headers.begin()->first;
    }
    EXPECT_EQ(client.http.Get("/readyz")->body, "ready");
}

TEST(Operations, BelieveTheProxyAboutItsClientsAndNobodyElse) {
    struct Row {
        char const* proxy;
        char const* forwarded;
        bool isLocal;
    };
    // The secret of the local user is for programs on this machine.
    for (Row const& row :
         {Row{"127.0.0.1", "", true}, Row{"127.0.0.1", "192.0.2.1", false},
          Row{"127.0.0.1", "192.0.2.1, 127.0.0.1", true},
          Row{"127.0.0.1", "192.0.2.1, ::ffff:127.0.0.1", true},
          Row{"127.0.0.1", "127.0.0.1, 192.0.2.1", false}, Row{"192.0.2.9", "192.0.2.1", true}}) {
        Options options;
        options.proxy = row.proxy;
        options.publicAddress = "https://review.example";
        RunningService service(options);
        httplib::Client http("127.0.0.1", service.GetPort());
        httplib::Headers headers;
        if (*row.forwarded) headers.emplace("X-Forwarded-For", row.forwarded);
        bool const isLocal = http.Get("/admin", headers)->status == 200;
        EXPECT_EQ(isLocal, row.isLocal) << row.proxy << ": " << row.forwarded;
    }
}

TEST(Operations, CountBytesAndResponsesThatWereCut) {
    RunningService service;
    ApiClient client(service.GetPort());
    auto const figure = [&](std::string const& name) {
        std::string const text = client.http.Get("/metrics")->body;
        return std::stoll(text.substr(text.find("\n" + name + " ") + name.size() + 2));
    };
    auto const received = figure("quillo_http_received_bytes_total");
    std::string const content = test::Noise(20'000'000);
    auto const asset = client.Upload(content)["asset"]["id"].get<std::string>();
    EXPECT_EQ(figure("quillo_http_received_bytes_total") - received, 20'000'000);
    std::string const link = client.CreateLink();
    client.AddToLink(link, asset);
    std::string const movie = "/r/" + link + "/assets/" + asset;
    auto const sent = figure("quillo_http_sent_bytes_total");
    EXPECT_EQ(client.http.Get(movie)->body.size(), content.size());
    EXPECT_GT(figure("quillo_http_sent_bytes_total") - sent, 20'000'000);
    EXPECT_EQ(figure("quillo_http_cut_total"), 0);
    {
        test::RawConnection const impatient(service.GetPort());
        impatient.Send("GET " + movie + " HTTP/1.1\r\nHost: x\r\n\r\n");
        impatient.ReadTo("\r\n\r\n");
    }
    while (figure("quillo_http_cut_total") == 0)
        continue;
}

/// A client over IPv4 is the same client on a socket for both versions.
TEST(Operations, KnowAnIpv4ClientOfASocketForBothVersions) {
    Options options;
    options.host = "::";
    options.proxy = "127.0.0.1";
    RunningService service(options);
    httplib::Client http("127.0.0.1", service.GetPort());
    EXPECT_EQ(http.Get("/admin")->status, 200);
    EXPECT_EQ(http.Get("/admin", {{"X-Forwarded-For", "192.0.2.1"}})->status, 403);
}

TEST(Operations, NameThePublicAddress) {
    Options options;
    options.publicAddress = "https://review.example";
    RunningService service(options);
    ApiClient client(service.GetPort());
    auto const metadata = client.Get("/.well-known/oauth-authorization-server");
    EXPECT_EQ(metadata["issuer"], "https://review.example");
    EXPECT_THAT(metadata["token_endpoint"].get<std::string>(),
                testing::StartsWith("https://review.example/"));
    auto const link = client.Post("/v1/projects/" + client.project + "/review-links",
                                  {{"name", "Review"}})["review_link"];
    EXPECT_THAT(link["url"].get<std::string>(), testing::StartsWith("https://review.example/r/"));
}

TEST(Operations, GiveEachRequestAnId) {
    RunningService service;
    httplib::Client http("127.0.0.1", service.GetPort());
    auto const idFor = [&](httplib::Headers const& headers) {
        return http.Get("/healthz", headers)->get_header_value("X-Request-Id");
    };
    std::string const longest(64, 'x');
    EXPECT_EQ(idFor({{"X-Request-Id", "a-1_B.2"}}), "a-1_B.2");
    EXPECT_EQ(idFor({{"X-Request-Id", longest}}), longest);
    for (httplib::Headers const& headers : std::vector<httplib::Headers>{
             {}, {{"X-Request-Id", longest + "x"}}, {{"X-Request-Id", "a b"}}}) {
        EXPECT_THAT(idFor(headers), testing::MatchesRegex("[0-9a-f]{16}"));
    }
    EXPECT_NE(idFor({}), idFor({}));
    test::RawConnection const nonsense(service.GetPort());
    nonsense.Send("GET / HTTP/1.1\r\nnonsense\r\n\r\n");
    EXPECT_THAT(nonsense.ReadAll(), HasSubstr("X-Request-Id: "));
}

}  // namespace
}  // namespace quilloservice
