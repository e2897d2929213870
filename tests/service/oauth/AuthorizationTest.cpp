#include <gtest/gtest.h>

#include "service/oauth/AuthorizationCodes.h"
#include "service/oauth/FormTokens.h"
#include "service/oauth/RedirectUri.h"
#include "service/store/SampleData.h"
#include "service/store/Store.h"
#include "tests/service/TempDirectory.h"
#include "tests/service/TestStore.h"

namespace quilloservice {
namespace {

TEST(RedirectUri, IsALoopbackAddressWithAPath) {
    std::pair<std::string, bool> const rows[] = {
        {"http://127.0.0.1:1/", true},
        {"http://127.0.0.1:65535/signed-in?app=1&x=%20", true},
        {"http://127.0.0.1/", true},
        {"http://[::1]:8080/cb", true},
        {"", false},
        {"http://127.0.0.1", false},
        {"http://127.0.0.1:8080", false},
        {"http://127.0.0.1:/", false},
        {"http://127.0.0.1:0/", false},
        {"http://127.0.0.1:080/", false},
        {"http://127.0.0.1:65536/", false},
        {"http://127.0.0.1:+1/", false},
        {"http://127.0.0.1:1@evil.example/", false},
        {"http://127.0.0.1@evil.example/", false},
        {"http://127.0.0.1.evil.example/", false},
        {"http://127.0.0.11/", false},
        {"http://127.0.0.2/", false},
        {"http://127.1/", false},
        {"http://2130706433/", false},
        {"http://[::1].evil.example/", false},
        {"http://[::ffff:127.0.0.1]/", false},
        {"http://localhost:8080/", false},
        {"https://127.0.0.1:8080/", false},
        {"HTTP://127.0.0.1:8080/", false},
        {" http://127.0.0.1:8080/", false},
        {"http://127.0.0.1\\evil.example/", false},
        {"http://127.0.0.1:1/\\evil.example", false},
        {"http://127.0.0.1:1/#fragment", false},
        {"http://127.0.0.1:1/\r\nSet-Cookie: a=b", false},
        {"http://127.0.0.1:1/\xC3\xA9", false},
        {"javascript:alert(1)//http://127.0.0.1:1/", false},
        {"http://127.0.0.1:1/" + std::string(1024, 'a'), false},
    };
    for (auto const& [uri, good] : rows)
        EXPECT_EQ(IsLoopbackRedirect(uri), good) << uri;
}

TEST(RedirectUri, AppendsParametersToTheQuery) {
    EXPECT_EQ(WithParameters("http://127.0.0.1:1/a", {{"code", "x&y"}, {"state", "1"}}),
              "http://127.0.0.1:1/a?code=x%26y&state=1");
    EXPECT_EQ(WithParameters("http://[::1]:1/a?b=c", {{"code", "x"}}),
              "http://[::1]:1/a?b=c&code=x");
}

// From RFC 7636, appendix B.
constexpr char const* kVerifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk";
constexpr char const* kChallenge = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM";

TEST(MatchesChallenge, RequiresAWellFormedMatchingVerifier) {
    EXPECT_TRUE(MatchesChallenge(kVerifier, kChallenge));
    EXPECT_FALSE(MatchesChallenge(std::string(43, 'A'), kChallenge));
    EXPECT_FALSE(MatchesChallenge("", kChallenge));
    EXPECT_FALSE(MatchesChallenge(kChallenge, kChallenge)) << "the method plain is not supported";
    // The SHA-256 matches, but the verifier is too short, too long or has invalid characters.
    const std::pair<std::string, char const*> rows[] = {
        {std::string(42, 'A'), "2FzmRL9Ogs7gMuqlw9kDCgkCdtm643AxEr38b4_d4wc"},
        {std::string(129, 'A'), "5xGMOom_gU3tKrIyMDVlI5JT9Z_eqT4n0CBuF1SS46c"},
        {std::string(42, 'A') + ' ', "m7AhPgSAqPpy6hGOwj09B2dO5LaO_qW8DYrpaX79kU8"},
    };
    for (auto const& [verifier, challenge] : rows)
        EXPECT_FALSE(MatchesChallenge(verifier, challenge)) << verifier;
}

class AuthorizationCodesTest : public testing::Test {
protected:
    AuthorizationCodesTest() { MakeSampleData(store, SampleSize::Small); }

    bool IsSignedIn(TokenPair const& pair) { return sessions.Find(pair.access).has_value(); }

    test::TempDirectory directory;
    std::unique_ptr<Store> const engine = test::OpenStore(directory.GetPath());
    Store& store = *engine;
    std::int64_t now = 1'000'000;
    Sessions sessions{store, [this] { return now; }};
    AuthorizationCodes codes{sessions, [this] { return now; }};
    AuthorizationRequest const request{ClientId("editor"), "http://127.0.0.1:1/cb", "state",
                                       kChallenge};
    AuthorizationCodes::Claim const claim{request.client, request.redirectUri, kVerifier};
    std::string const code = codes.Issue(SampleUserId(), request);
};

TEST_F(AuthorizationCodesTest, StartOneSession) {
    auto pair = codes.Redeem(code, claim);
    ASSERT_TRUE(pair);
    EXPECT_EQ(sessions.Find(pair->access)->user, SampleUserId());
    EXPECT_TRUE(sessions.Refresh(pair->refresh, request.client));
    EXPECT_FALSE(codes.Redeem(code, claim));
    EXPECT_FALSE(IsSignedIn(*pair)) << "a reused code is a stolen one";
}

TEST_F(AuthorizationCodesTest, ExpireAfterAMinute) {
    now += AuthorizationCodes::kSeconds - 1;
    std::string const later = codes.Issue(SampleUserId(), request);
    EXPECT_TRUE(codes.Redeem(code, claim));
    now += 1;
    std::string const last = codes.Issue(SampleUserId(), request);
    EXPECT_TRUE(codes.Redeem(later, claim));
    now += AuthorizationCodes::kSeconds;
    EXPECT_FALSE(codes.Redeem(last, claim));
}

TEST_F(AuthorizationCodesTest, RequireTheClaimOfTheRequestAndAllowOneAttempt) {
    using Claim = AuthorizationCodes::Claim;
    Claim const wrong[] = {
        {ClientId("another"), claim.redirectUri, claim.verifier},
        {claim.client, "http://127.0.0.1:2/cb", claim.verifier},
        {claim.client, claim.redirectUri, std::string(43, 'A')},
        {claim.client, claim.redirectUri, ""},
    };
    for (Claim const& row : wrong) {
        std::string const fresh = codes.Issue(SampleUserId(), request);
        EXPECT_FALSE(codes.Redeem(fresh, row));
        EXPECT_FALSE(codes.Redeem(fresh, claim));
    }
    EXPECT_FALSE(codes.Redeem("", claim));
    EXPECT_FALSE(codes.Redeem(code + "0", claim));
    EXPECT_TRUE(codes.Redeem(code, claim));
}

TEST(FormTokens, AreBoundToRequestAndBrowserAndExpireAfterTenMinutes) {
    std::int64_t now = 1'000'000;
    FormTokens tokens([&] { return now; });
    BrowserId const browser(std::string(64, 'a'));
    BrowserId const another(std::string(64, 'b'));
    std::string const uri = "http://127.0.0.1:1/cb";
    AuthorizationRequest const request{ClientId("editor"), uri, "state", kChallenge};
    std::string const token = tokens.Make(browser, request);

    EXPECT_TRUE(tokens.IsGood(token, browser, request));
    EXPECT_FALSE(tokens.IsGood(token, another, request));
    EXPECT_FALSE(
        tokens.IsGood(FormTokens([&] { return now; }).Make(browser, request), browser, request));
    AuthorizationRequest const others[] = {
        {ClientId("editorx"), uri, "state", kChallenge},
        {request.client, uri + 'x', "state", kChallenge},
        {request.client, uri, "statex", kChallenge},
        {request.client, uri, "state", kChallenge + std::string("x")},
        // The same concatenated text with another boundary.
        {ClientId("editorh"), "ttp://127.0.0.1:1/cb", "state", kChallenge},
    };
    for (AuthorizationRequest const& other : others)
        EXPECT_FALSE(tokens.IsGood(token, browser, other)) << other.client << other.redirectUri;
    std::string const later = std::to_string(now + 1) + token.substr(token.find('.'));
    for (std::string const& forged : {std::string(), std::string("."), later, token + "0"})
        EXPECT_FALSE(tokens.IsGood(forged, browser, request)) << forged;

    now += FormTokens::kSeconds - 1;
    EXPECT_TRUE(tokens.IsGood(token, browser, request));
    now += 1;
    EXPECT_FALSE(tokens.IsGood(token, browser, request));
    now -= FormTokens::kSeconds + 1;
    EXPECT_FALSE(tokens.IsGood(token, browser, request)) << "issued in the future";
}

}  // namespace
}  // namespace quilloservice
