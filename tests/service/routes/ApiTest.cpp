#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "service/base/Uuid.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using httplib::Headers;
using nlohmann::json;
using test::ApiClient;
using test::RunningService;

std::string CodeOf(httplib::Result const& result) {
    return json::parse(result->body)["error"]["code"];
}

class ApiTest : public testing::Test {
protected:
    RunningService service;
    ApiClient client{service.GetPort()};
    std::string unknown = UuidOf("nothing");
};

TEST_F(ApiTest, RequiresAToken) {
    std::vector<std::pair<char const*, std::string>> const requests = {
        {"GET", "/v1/me"},
        {"GET", "/v1/accounts"},
        {"GET", "/v1/accounts/" + unknown + "/workspaces"},
        {"GET", "/v1/workspaces/" + unknown + "/projects"},
        {"GET", "/v1/folders/" + client.folder + "/children"},
        {"POST", "/v1/uploads"},
        {"HEAD", "/v1/uploads/" + unknown},
        {"PATCH", "/v1/uploads/" + unknown},
        {"GET", "/v1/uploads/" + unknown + "/asset"},
        {"POST", "/v1/projects/" + client.project + "/review-links"},
        {"POST", "/v1/review-links/" + unknown + "/assets"},
        {"DELETE", "/v1/uploads/" + unknown},
        {"POST", "/v1/accounts"},
        {"PATCH", "/v1/folders/" + client.folder},
        {"DELETE", "/v1/projects/" + client.project},
        {"GET", "/v1/events"},
        {"GET", "/v1/no-such-route"},
        {"GET", "/v1"},
    };
    for (auto const& [method, path] : requests) {
        for (std::string const& authorization :
             {std::string(), std::string("Bearer "), "Bearer " + unknown, "Basic " + client.token,
              client.token, "Bearer " + client.token + "x"}) {
            auto result = client.Send(method, path, {{"Authorization", authorization}});
            ASSERT_TRUE(result) << method << path;
            EXPECT_EQ(result->status, 401) << method << path << authorization;
            EXPECT_EQ(result->get_header_value("WWW-Authenticate"), "Bearer");
        }
    }
    EXPECT_EQ(client.Send("GET", "/v1/me", {{"Authorization", "bearer  " + client.token}})->status,
              200)
        << "schemes are case-insensitive";
}

TEST_F(ApiTest, ListsAllowedMethods) {
    struct Row {
        std::string method;
        std::string path;
        int status;
        std::string allow;
    };
    for (Row const& row : std::vector<Row>{
             {"OPTIONS", "/v1/uploads", 204, "POST, OPTIONS"},
             {"OPTIONS", "/v1/uploads/" + unknown, 204, "HEAD, PATCH, DELETE, OPTIONS"},
             {"OPTIONS", "/v1/folders/" + unknown + "/children", 204, "GET, HEAD, POST, OPTIONS"},
             {"OPTIONS", "/v1/none", 404, ""},
             {"PUT", "/v1/me", 405, "GET, HEAD, OPTIONS"},
             {"TRACE", "/healthz", 405, "GET, HEAD, OPTIONS"},
             {"GET", "/oauth/token", 405, "POST, OPTIONS"},
             {"TRACE", "/none", 404, ""},
         }) {
        bool asks = row.method == "OPTIONS";  // needs no token
        auto result =
            client.Send(row.method, row.path, asks ? Headers{{"Authorization", ""}} : Headers{});
        ASSERT_TRUE(result) << row.method << row.path;
        EXPECT_EQ(result->status, row.status) << row.method << row.path;
        EXPECT_EQ(result->get_header_value("Allow"), row.allow) << row.method << row.path;
    }
}

TEST_F(ApiTest, AllowsCorsForOneOrigin) {
    RunningService open({.allowOrigin = "https://review.example"});
    ApiClient reader(open.GetPort());
    auto origin = [&](ApiClient& of, std::string const& method, char const* from) {
        auto result = of.Send(method, "/v1/uploads", {{"Origin", from}});
        return result->get_header_value("Access-Control-Allow-Origin") + " " +
               result->get_header_value("Access-Control-Allow-Methods") + " " +
               (result->get_header_value("Access-Control-Expose-Headers").find("Upload-Offset") !=
                        std::string::npos
                    ? "exposed"
                    : "");
    };
    EXPECT_EQ(origin(reader, "OPTIONS", "https://review.example"),
              "https://review.example POST, OPTIONS exposed");
    EXPECT_EQ(origin(reader, "POST", "https://review.example"), "https://review.example  exposed");
    EXPECT_EQ(origin(reader, "OPTIONS", "https://evil.example"), "  ");
    EXPECT_EQ(origin(client, "OPTIONS", "https://review.example"), "  ");
}

TEST_F(ApiTest, DistinguishesUnknownFromForbidden) {
    std::string strangersAccount = UuidOf("account/Somebody Else's Account");
    struct Row {
        std::string method;
        std::string path;
        int status;
    };
    for (Row const& row : std::vector<Row>{
             {"GET", "/v1/accounts/" + strangersAccount + "/workspaces", 403},
             {"GET", "/v1/accounts/" + unknown + "/workspaces", 404},
             {"GET", "/v1/workspaces/" + client.folder + "/projects", 404},
             {"GET", "/v1/folders/" + client.project + "/children", 404},
             {"GET", "/v1/folders/" + client.folder + "/children/", 404},
             {"GET", "/v1/folders//children", 404},
             {"GET", "/v1/folders/..%2F..%2Fetc/children", 404},
             {"GET", "/v1/folders/FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF/children", 404},
             {"GET", "/v1/folders/" + std::string(4000, 'a') + "/children", 404},
             {"GET", "/v1/folders/%00/children", 404},
             {"GET", "/v1/folders/%7Bid%7D/children", 404},
             {"HEAD", "/v1/uploads/" + unknown, 404},
             {"DELETE", "/v1/uploads/" + unknown, 404},
         }) {
        auto result = client.Send(row.method, row.path);
        ASSERT_TRUE(result) << row.path;
        EXPECT_EQ(result->status, row.status) << row.path << result->body;
    }
}

TEST_F(ApiTest, SendsErrorPagesToBrowsers) {
    std::string const browser = "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8";
    struct Row {
        std::string path;
        std::string accept;
        int status;
        bool page;
    };
    for (Row const& row : std::vector<Row>{
             {"/nothing", browser, 404, true},
             {"/v1x", browser, 404, true},
             {"/nothing", "TEXT/*", 404, true},
             {"/nothing", "application/json; q=0.5, */*;Q=0.1, text/html ;level=1;q=0.6", 404,
              true},
             {"/nothing", "", 404, false},
             {"/nothing", "*/*", 404, false},
             {"/nothing", "application/json, text/html;q=0.9", 404, false},
             {"/nothing", "text/*, text/html;q=0.1, application/*;q=0.5", 404, false},
             {"/nothing", "text/html;q=x", 404, false},
             {"/v1", browser, 401, false},
             {"/v1/nothing", browser, 401, false},
             {"/oauth/token", browser, 405, false},
             {"/oauth/revoke", browser, 405, false},
         }) {
        SCOPED_TRACE(row.path + " " + row.accept);
        auto answer = client.http.Get(row.path, {{"Accept", row.accept}});
        EXPECT_EQ(answer->status, row.status);
        EXPECT_EQ(answer->get_header_value("Content-Type"),
                  row.page ? "text/html; charset=utf-8" : "application/json");
        EXPECT_EQ(answer->has_header("Content-Security-Policy"), row.page);
        EXPECT_EQ(answer->get_header_value("Vary"), row.status == 404 ? "Accept" : "");
        if (row.page) {
            EXPECT_THAT(answer->body, testing::HasSubstr("There is nothing at this address."));
        }
    }
}

TEST_F(ApiTest, ListsTheLargeSampleCompletely) {
    RunningService large({.sample = SampleSize::Large});
    ApiClient reader(large.GetPort());
    std::size_t workspaces = 0;
    std::size_t projects = 0;
    std::size_t longest = 0;
    std::set<std::string> ids;
    auto list = [&](std::string const& path, char const* key) {
        return reader.Get(path)[key].get<std::vector<json>>();
    };
    for (json const& account : list("/v1/accounts", "accounts")) {
        std::string path = "/v1/accounts/" + account["id"].get<std::string>() + "/workspaces";
        for (json const& workspace : list(path, "workspaces")) {
            ++workspaces;
            path = "/v1/workspaces/" + workspace["id"].get<std::string>() + "/projects";
            for (json const& project : list(path, "projects")) {
                ++projects;
                ids.insert(project["id"]);
                ids.insert(project["root_folder"]["id"]);
                longest = std::max(longest, project["name"].get<std::string>().size());
                EXPECT_EQ(project["root_folder"]["type"], "folder");
            }
        }
    }
    EXPECT_EQ(workspaces, 40u);
    EXPECT_EQ(projects, 2000u);
    EXPECT_EQ(ids.size(), 4000u);
    EXPECT_EQ(longest, 200u);
    EXPECT_GT(reader.Get("/v1/folders/" + reader.folder + "/children")["assets"].size(), 1000u);
}

TEST_F(ApiTest, LimitsTheRateOfASession) {
    RunningService limited({.limit = RateLimit{3, std::chrono::hours(1)}});
    ApiClient impatient(limited.GetPort());  // has already sent one request of each other kind
    auto children = [&] { return impatient.Send("GET", "/v1/folders/" + unknown + "/children"); };
    for (int i = 0; i < 3; ++i) {
        auto result = children();
        EXPECT_EQ(result->status, 404);
        EXPECT_EQ(result->get_header_value("X-RATELIMIT-LIMIT"), "3");
        EXPECT_EQ(result->get_header_value("X-RATELIMIT-WINDOW"), "3600000");
    }
    auto refused = children();
    EXPECT_EQ(refused->status, 429);
    EXPECT_EQ(CodeOf(refused), "rate_limited");
    EXPECT_GT(std::stoi(refused->get_header_value("Retry-After")), 3500);
    EXPECT_EQ(impatient.Send("GET", "/v1/me")->status, 200);
    EXPECT_EQ(ApiClient(limited.GetPort()).Send("GET", "/v1/me")->status, 200);
    // Requests for an existing upload are not counted.
    std::string upload = impatient.CreateUpload(10);
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_EQ(impatient.Append(upload, i, "x")->status, 204);
}

TEST_F(ApiTest, RepeatsIdempotentCreations) {
    std::string key = NewUuid();
    Headers headers{{"Idempotency-Key", key}};
    std::string upload = client.CreateUpload(10, "a.mp4", {}, headers);
    EXPECT_EQ(client.CreateUpload(10, "a.mp4", {}, headers), upload);
    EXPECT_NE(client.CreateUpload(10, "a.mp4"), upload);
    EXPECT_THROW(client.CreateUpload(11, "a.mp4", {}, headers), std::runtime_error);
    EXPECT_THROW(client.CreateUpload(10, "b.mp4", {}, headers), std::runtime_error);

    auto createLink = [&](std::string const& name, std::string const& linkKey) {
        return client.Send("POST", "/v1/projects/" + client.project + "/review-links",
                           {{"Idempotency-Key", linkKey}}, json{{"name", name}}.dump());
    };
    std::string linkKey = NewUuid();
    auto first = createLink("Cut", linkKey);
    EXPECT_EQ(first->status, 201);
    EXPECT_EQ(createLink("Cut", linkKey)->body, first->body);
    EXPECT_EQ(CodeOf(createLink("Other", linkKey)), "conflict");
    EXPECT_EQ(CodeOf(createLink("Cut", key)), "conflict");
}

}  // namespace
}  // namespace quilloservice
