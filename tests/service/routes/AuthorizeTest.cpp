#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using httplib::Headers;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Fields = std::map<std::string, std::string>;

constexpr char const* kForm = "application/x-www-form-urlencoded";
constexpr char const* kRedirect = "http://127.0.0.1:5000/cb?app=1";
// From RFC 7636, appendix B.
constexpr char const* kVerifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk";
constexpr char const* kChallenge = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM";

constexpr char const* kStateBack = "&state=a&b";  // decoded by httplib

/// The text between `before` and `after`; empty if it is not found.
std::string Between(std::string const& text, std::string const& before, std::string const& after) {
    auto begin = text.find(before);
    if (begin == std::string::npos) return {};
    begin += before.size();
    return text.substr(begin, text.find(after, begin) - begin);
}

class AuthorizeTest : public testing::Test {
protected:
    static Fields Request(Fields const& changes = {}) {
        Fields fields{{"response_type", "code"},      {"client_id", "The \"Editor\""},
                      {"redirect_uri", kRedirect},    {"state", "a&b"},
                      {"code_challenge", kChallenge}, {"code_challenge_method", "S256"}};
        for (auto const& [name, value] : changes)
            fields[name] = value;
        return fields;
    }

    static std::string Query(Fields const& fields) {
        return httplib::detail::params_to_query_str({fields.begin(), fields.end()});
    }

    httplib::Result Get(Fields const& fields, Headers const& headers = {}) {
        return http.Get("/oauth/authorize?" + Query(fields), headers);
    }

    /// Opens the page and submits its form with `changes` to the fields. `cookie`: empty for the
    /// one that the page set.
    httplib::Result Submit(Fields const& changes, std::string cookie = {}) {
        auto page = Get(Request());
        if (cookie.empty()) cookie = CookieOf(page);
        Fields fields = Request({{"form_token", TokenOf(page)},
                                 {"user", Between(page->body, "<option value=\"", "\"")},
                                 {"password", "review"},
                                 {"decision", "allow"}});
        for (auto const& [name, value] : changes)
            fields[name] = value;
        return http.Post("/oauth/authorize", {{"Cookie", cookie}}, Query(fields), kForm);
    }

    static std::string CookieOf(httplib::Result const& page) {
        std::string cookie = page->get_header_value("Set-Cookie");
        return cookie.substr(0, cookie.find(';'));
    }

    static std::string TokenOf(httplib::Result const& page) {
        return Between(page->body, "name=\"form_token\" value=\"", "\"");
    }

    httplib::Result Redeem(std::string const& code, Fields const& changes = {}) {
        Fields fields{{"grant_type", "authorization_code"},
                      {"client_id", "The \"Editor\""},
                      {"redirect_uri", kRedirect},
                      {"code_verifier", kVerifier},
                      {"code", code}};
        for (auto const& [name, value] : changes)
            fields[name] = value;
        return http.Post("/oauth/token", Query(fields), kForm);
    }

    static void ExpectGuarded(httplib::Result const& answer) {
        EXPECT_EQ(answer->get_header_value("Cache-Control"), "no-store");
        EXPECT_EQ(answer->get_header_value("X-Frame-Options"), "DENY");
        EXPECT_EQ(answer->get_header_value("Referrer-Policy"), "no-referrer");
        EXPECT_EQ(answer->get_header_value_count("Referrer-Policy"), 1u);
    }

    test::RunningService service;
    httplib::Client http{"127.0.0.1", service.GetPort()};
};

TEST_F(AuthorizeTest, SignsInTheChosenUserAndRedeemsTheCodeOnce) {
    auto page = Get(Request());
    ASSERT_EQ(page->status, 200);
    ExpectGuarded(page);
    EXPECT_THAT(page->get_header_value("Content-Security-Policy"),
                HasSubstr("form-action 'self' http://127.0.0.1:5000"));
    EXPECT_THAT(page->body, HasSubstr("The &quot;Editor&quot;"));
    EXPECT_THAT(page->get_header_value("Set-Cookie"), HasSubstr("HttpOnly; SameSite=Strict"));

    std::string alex = Between(page->body, "</option>\n<option value=\"", "\"");
    auto answer = Submit({{"user", alex}});
    ASSERT_EQ(answer->status, 303);
    ExpectGuarded(answer);
    std::string location = answer->get_header_value("Location");
    EXPECT_THAT(location, StartsWith(std::string(kRedirect) + "&code="));
    EXPECT_THAT(location, testing::EndsWith(kStateBack));
    std::string code = Between(location, "code=", "&");

    auto granted = Redeem(code);
    ASSERT_EQ(granted->status, 200);
    EXPECT_EQ(granted->get_header_value("Cache-Control"), "no-store");
    Headers signedIn{{"Authorization",
                      "Bearer " + json::parse(granted->body)["access_token"].get<std::string>()}};
    EXPECT_EQ(json::parse(http.Get("/v1/me", signedIn)->body)["user"]["name"], "Alex Moreau");

    auto again = Redeem(code);
    EXPECT_EQ(again->status, 400);
    EXPECT_EQ(json::parse(again->body)["error"], "invalid_grant");
    EXPECT_EQ(http.Get("/v1/me", signedIn)->status, 401);
}

TEST_F(AuthorizeTest, NeverRedirectsForAnUntrustedRequest) {
    Fields const rows[] = {
        {{"client_id", ""}},
        {{"client_id", std::string(257, 'a')}},
        {{"client_id", std::string("a\0b", 3)}},
        {{"client_id", "\xFF"}},
        {{"client_id", "the\u202Eeditor"}},
        {{"redirect_uri", ""}},
        {{"redirect_uri", "http://evil.example/cb"}},
        {{"redirect_uri", "http://localhost:5000/cb"}},
    };
    auto expectRefused = [](httplib::Result const& answer) {
        EXPECT_EQ(answer->status, 400);
        EXPECT_FALSE(answer->has_header("Location"));
        EXPECT_THAT(answer->body, HasSubstr("cannot go on"));
        ExpectGuarded(answer);
    };
    for (Fields const& row : rows) {
        SCOPED_TRACE(row.begin()->second);
        // A second error, which alone would be answered with a redirect, changes nothing.
        Fields broken = row;
        broken["response_type"] = "token";
        expectRefused(Get(Request(row)));
        expectRefused(Get(Request(broken)));
        expectRefused(Submit(row));
    }
    expectRefused(http.Get("/oauth/authorize"));
    expectRefused(http.Get("/oauth/authorize?client_id=b&" + Query(Request())));
    expectRefused(http.Get("/oauth/authorize?redirect_uri=b&" + Query(Request())));
    EXPECT_THAT(Get(Request({{"redirect_uri", "<script>"}}))->body, Not(HasSubstr("<script>")));
}

TEST_F(AuthorizeTest, RedirectsWithOtherErrors) {
    struct Row {
        Fields changes;
        std::string extra;
        char const* error;
    };
    Row const rows[] = {
        {{{"response_type", ""}}, "", "invalid_request"},
        {{{"response_type", "token"}}, "", "unsupported_response_type"},
        {{{"code_challenge", ""}}, "", "invalid_request"},
        {{{"code_challenge", std::string(kChallenge) + "="}}, "", "invalid_request"},
        {{{"code_challenge", "too short"}}, "", "invalid_request"},
        {{{"code_challenge_method", ""}}, "", "invalid_request"},
        {{{"code_challenge_method", "plain"}}, "", "invalid_request"},
        {{}, "&code_challenge=x", "invalid_request"},
        {{}, "&response_type=token", "invalid_request"},
    };
    for (Row const& row : rows) {
        auto answer = http.Get("/oauth/authorize?" + Query(Request(row.changes)) + row.extra);
        EXPECT_EQ(answer->status, 303);
        std::string location = answer->get_header_value("Location");
        EXPECT_THAT(location, StartsWith(kRedirect + std::string("&error=") + row.error + "&"));
        EXPECT_THAT(location, testing::EndsWith(kStateBack));
    }
    // An invalid state is not sent back.
    for (std::string const& state : {std::string("a\r\nb"), std::string(1025, 'a')}) {
        EXPECT_THAT(Get(Request({{"state", state}}))->get_header_value("Location"),
                    testing::AllOf(HasSubstr("error=invalid_request"), Not(HasSubstr("state="))));
    }
}

TEST_F(AuthorizeTest, ShowsTheFormAgainAfterAWrongPassword) {
    auto answer = Submit({{"password", "wrong"}});
    EXPECT_EQ(answer->status, 403);
    EXPECT_THAT(answer->body, HasSubstr("not the password"));
    EXPECT_THAT(answer->body, Not(HasSubstr("value=\"wrong\"")));
    EXPECT_FALSE(TokenOf(answer).empty());
    auto unknown = Submit({{"user", "\"><script>"}});
    EXPECT_EQ(unknown->status, 403);
    EXPECT_THAT(unknown->body, HasSubstr("value=\"&quot;&gt;&lt;script&gt;\""));
    EXPECT_EQ(Submit({{"password", ""}})->status, 403);

    // The page shown after the error can be submitted.
    auto page = Get(Request());
    std::string cookie = CookieOf(page);
    Fields wrong = Request({{"form_token", TokenOf(page)}, {"decision", "allow"}});
    auto kept = http.Post("/oauth/authorize", {{"Cookie", cookie}}, Query(wrong), kForm);
    EXPECT_EQ(Submit({{"form_token", TokenOf(kept)}}, cookie)->status, 303);
}

TEST_F(AuthorizeTest, RedirectsWithADenial) {
    auto answer = Submit({{"decision", "deny"}, {"password", ""}});
    EXPECT_EQ(answer->status, 303);
    EXPECT_THAT(answer->get_header_value("Location"),
                testing::AllOf(HasSubstr("&error=access_denied&"), testing::EndsWith(kStateBack),
                               Not(HasSubstr("code="))));
}

TEST_F(AuthorizeTest, BindsTheFormToBrowserAndRequest) {
    std::string const secret(64, 'a');
    std::pair<Fields, std::string> const rows[] = {
        {{}, "quillo_browser=" + secret},
        {{}, "other=1"},
        {{}, "quillo_browser="},
        {{{"form_token", ""}}, ""},
        {{{"form_token", "1.00"}}, ""},
        {{{"state", "another"}}, ""},
        {{{"client_id", "another"}}, ""},
        {{{"redirect_uri", "http://127.0.0.1:5001/cb"}}, ""},
        {{{"code_challenge", std::string(43, 'A')}}, ""},
        {{{"decision", ""}}, ""},
    };
    for (auto const& [changes, cookie] : rows) {
        auto answer = Submit(changes, cookie);
        EXPECT_EQ(answer->status, 400) << cookie << testing::PrintToString(changes);
        EXPECT_FALSE(answer->has_header("Location"));
    }
    // A browser keeps its cookie, so several of its pages can be open at once.
    auto first = Get(Request());
    auto second = Get(Request(), {{"Cookie", "a=b; " + CookieOf(first)}});
    EXPECT_FALSE(second->has_header("Set-Cookie"));
    EXPECT_EQ(Submit({{"form_token", TokenOf(second)}}, CookieOf(first))->status, 303);
}

TEST_F(AuthorizeTest, RequiresAllParametersOfATokenRequest) {
    std::string code = Between(Submit({})->get_header_value("Location"), "code=", "&");
    for (char const* missing : {"code", "redirect_uri", "code_verifier", "client_id"}) {
        auto answer = Redeem(code, {{missing, ""}});
        EXPECT_EQ(answer->status, 400) << missing;
        EXPECT_EQ(json::parse(answer->body)["error"], "invalid_request");
    }
    auto refused = Redeem(code, {{"code_verifier", std::string(43, 'A')}});
    EXPECT_EQ(json::parse(refused->body)["error"], "invalid_grant");
}

}  // namespace
}  // namespace quilloservice
