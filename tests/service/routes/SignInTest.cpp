#include <gtest/gtest.h>

#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using httplib::Headers;
using nlohmann::json;
using test::RunningService;

constexpr char const* kForm = "application/x-www-form-urlencoded";

TEST(SignInTest, SignsInAndOut) {
    RunningService service;
    test::ApiClient client(service.GetPort());
    auto token = [&](std::string const& form, Headers const& headers = {}) {
        return client.http.Post("/oauth/token", headers, form, kForm);
    };
    auto errorOf = [](httplib::Result const& result) {
        return result->status == 400 ? json::parse(result->body)["error"] : json(result->status);
    };
    std::string const grant = "&grant_type=urn%3Aquillo%3Agrant-type%3Alocal-user";
    std::string const secret = test::LocalUserSecretAt(service.GetPort());
    std::string const proof = grant + "&local_user_secret=" + secret;
    std::string local = "client_id=editor" + proof;
    auto result = token(local);
    ASSERT_EQ(result->status, 200);
    EXPECT_EQ(result->get_header_value("Cache-Control"), "no-store");
    EXPECT_EQ(result->get_header_value("Pragma"), "no-cache");
    json pair = json::parse(result->body);
    EXPECT_EQ(pair["token_type"], "Bearer");
    EXPECT_EQ(pair["expires_in"], 3600);
    auto refresh = [&] {
        return token("client_id=editor&grant_type=refresh_token&refresh_token=" +
                     pair["refresh_token"].get<std::string>());
    };
    EXPECT_EQ(refresh()->status, 200);

    for (std::string const& claim :
         {std::string(), std::string("&local_user_secret="),
          "&local_user_secret=" + secret.substr(1), "&local_user_secret=" + std::string(64, '0')})
        EXPECT_EQ(errorOf(token("client_id=editor" + grant + claim)), "unauthorized_client");
    EXPECT_EQ(token("client_id=" + std::string(256, 'a') + proof)->status, 200);
    EXPECT_EQ(token("client_id=Sch%C3%A4rfe%20%E2%9C%82" + proof)->status, 200);
    for (std::string const& name :
         {std::string(257, 'a'), std::string("a%0Ab"), std::string("%7F"), std::string("%C2%85"),
          std::string("%E2%80%AEa"), std::string("%EF%BB%BFa"), std::string("%FF")}) {
        EXPECT_EQ(errorOf(token("client_id=" + name + proof)), "invalid_request") << name;
        EXPECT_EQ(errorOf(client.http.Post("/oauth/revoke", "token=x&client_id=" + name, kForm)),
                  "invalid_request")
            << name;
    }
    EXPECT_EQ(errorOf(token(local, {{"Origin", "http://elsewhere.example"}})),
              "unauthorized_client");
    EXPECT_EQ(errorOf(token(local, {{"Host", "elsewhere.example"}})), "unauthorized_client");
    EXPECT_EQ(errorOf(token("grant_type=refresh_token")), "invalid_request");
    EXPECT_EQ(errorOf(token("client_id=a&client_id=b&grant_type=x")), "invalid_request");
    EXPECT_EQ(errorOf(token("client_id=a&grant_type=password")), "unsupported_grant_type");
    EXPECT_EQ(errorOf(token("client_id=a&grant_type=refresh_token&refresh_token=x")),
              "invalid_grant");
    EXPECT_EQ(errorOf(client.http.Post("/oauth/token", "{}", "application/json")),
              "invalid_request");

    EXPECT_EQ(client.http.Post("/oauth/revoke", "token=" + client.token, kForm)->status, 200);
    EXPECT_EQ(client.http.Post("/oauth/revoke", "token=unknown", kForm)->status, 200);
    EXPECT_EQ(client.Send("GET", "/v1/me")->status, 401);
    client.token = pair["access_token"];
    EXPECT_EQ(client.Send("GET", "/v1/me")->status, 200);
}

TEST(SignInTest, LimitsTheRateOfTokenRequestsByAddress) {
    RunningService limited({.limit = RateLimit{3, std::chrono::hours(1)}});
    httplib::Client stranger("127.0.0.1", limited.GetPort());
    for (auto [path, status] : {std::pair("/oauth/token", 400),
                                {"/oauth/revoke", 200},
                                {"/oauth/token", 400},
                                {"/oauth/revoke", 429}}) {
        auto result = stranger.Post(path, "token=x", kForm);
        EXPECT_EQ(result->status, status);
        EXPECT_EQ(result->get_header_value("X-RATELIMIT-LIMIT"), "3");
        EXPECT_EQ(result->get_header_value("X-RATELIMIT-WINDOW"), "3600000");
    }
    auto refused = stranger.Post("/oauth/token", "grant_type=x", kForm);
    EXPECT_EQ(refused->status, 429);
    EXPECT_EQ(json::parse(refused->body)["error"], "rate_limited");
    EXPECT_EQ(refused->get_header_value("Pragma"), "no-cache");
    EXPECT_GT(std::stoi(refused->get_header_value("Retry-After")), 3500);
}

}  // namespace
}  // namespace quilloservice
