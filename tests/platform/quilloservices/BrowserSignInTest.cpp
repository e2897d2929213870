#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <map>
#include <optional>

#include "moxcore/config/Error.h"
#include "quilloauth/AuthManager.h"
#include "quilloauth/AuthSession.h"
#include "quilloauth/Secrets.h"
#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "tests/support/FailureLog.h"
#include "tests/support/FakeBrowser.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/SignInStages.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using quilloauth::AuthSession;
using quilloauth::SignInStage;
using quilloauth::jwt::kNotSignedIn;
using quilloauth::jwt::kSessionExists;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::StartsWith;
using testsupport::FakeBrowser;
using testsupport::LocalConnection;
using testsupport::PortOf;

TEST(ParseQuery, TakesParametersApart) {
    EXPECT_THAT(quillocommon::ParseQuery("a=1&b=x%20%2B+y&a=&c&=d&e=f=g&%zz"),
                ElementsAre(Pair("a", "1"), Pair("b", "x + y"), Pair("a", ""), Pair("c", ""),
                            Pair("", "d"), Pair("e", "f=g"), Pair("%zz", "")));
    EXPECT_THAT(quillocommon::ParseQuery(""), IsEmpty());
}

TEST(Secrets, AreNeverTheSameAndMeetTheStandardsExample) {
    auto const secret = quilloauth::CreateSecret();
    EXPECT_THAT(secret, testing::MatchesRegex("[A-Za-z0-9_-]*"));
    EXPECT_EQ(secret.size(), 43u);
    EXPECT_NE(secret, quilloauth::CreateSecret());
    // RFC 7636, appendix B.
    EXPECT_EQ(quilloauth::ChallengeOf("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

/// A service that wants its users in the browser, and grants what they bring from there.
class BrowserSignInTest : public testing::Test {
protected:
    BrowserSignInTest() {
        transport.SetResponder([this](auto const& request) {
            bool const isCode = request.body->find("authorization_code") != std::string::npos;
            return isCode ? codeAnswer
                          : quillosdk::HttpResponse{400, {}, R"({"error":"unauthorized_client"})"};
        });
    }
    ~BrowserSignInTest() override {
        session->Stop();
        for (auto const& failure : failures.All()) {
            EXPECT_EQ(failure.step, quillocommon::Step::SignIn);
            EXPECT_THAT(failure.message, Not(HasSubstr("secret")));
        }
    }

    [[nodiscard]] static std::shared_ptr<AuthSession> MakeSession(std::string const& redirectURI,
                                                                  std::string const& path) {
        return std::make_shared<AuthSession>("the editor", redirectURI, path);
    }

    /// A sign-in on a thread of its own, which a test that fails does not leave waiting.
    class Attempt {
    public:
        explicit Attempt(std::shared_ptr<AuthSession> session)
            : session(std::move(session)),
              result(std::async(std::launch::async, [session = this->session] {
                  return session->Login().GetResult();
              })) {}
        ~Attempt() {
            if (result.valid()) session->Stop();
        }
        Attempt(Attempt&&) = default;

        [[nodiscard]] std::int32_t Result() { return result.get(); }

    private:
        std::shared_ptr<AuthSession> session;
        std::future<std::int32_t> result;
    };

    [[nodiscard]] Attempt Login() const { return Attempt(session); }

    static bool IsOpen(FakeBrowser::Page const& page) {
        return LocalConnection(PortOf(page.Parameter("redirect_uri"))).IsOpen();
    }

    quillosdk::HttpResponse codeAnswer{
        200,
        {},
        R"({"access_token":"secret-access-token","token_type":"Bearer","expires_in":3600,)"
        R"("refresh_token":"secret-refresh-token"})"};
    testsupport::ManualExecutor executor;
    testsupport::ScriptedTransport transport;
    testsupport::FailureLog failures;
    testsupport::SignInStages stages;
    testsupport::TemporaryDirectory directory;
    FakeBrowser browser;
    std::string const tokenPath = (directory.Path() / "tokens.json").string();
    std::shared_ptr<AuthSession> session = MakeSession("http://127.0.0.1:1/signed/in", tokenPath);
};

TEST_F(BrowserSignInTest, TakesTheUserThereAndBackAndKeepsTheTokens) {
    auto login = Login();
    auto const page = browser.NextPage();
    EXPECT_THAT(page.url, StartsWith(std::string(transport.kAddress) + "/oauth/authorize?"));
    EXPECT_EQ(page.Parameter("response_type"), "code");
    EXPECT_EQ(page.Parameter("client_id"), "the editor");
    EXPECT_EQ(page.Parameter("code_challenge_method"), "S256");
    EXPECT_THAT(page.Parameter("redirect_uri"),
                testing::MatchesRegex("http://127\\.0\\.0\\.1:[0-9]+/signed/in"));

    auto const answer = FakeBrowser::Visit(page.ReturnAddress("secret%2Fcode"));
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(answer, HasSubstr("You can close this window"));
    EXPECT_THAT(answer, Not(HasSubstr("secret")));
    EXPECT_EQ(login.Result(), kSessionExists);
    EXPECT_FALSE(IsOpen(page));

    std::map<std::string, std::string> form;
    for (auto const& [name, value] : quillocommon::ParseQuery(*transport.At(1).body))
        form[name] = value;
    EXPECT_EQ(transport.LineAt(1), "POST /oauth/token");
    EXPECT_EQ(form["grant_type"], "authorization_code");
    EXPECT_EQ(form["client_id"], "the editor");
    EXPECT_EQ(form["code"], "secret/code");
    EXPECT_EQ(form["redirect_uri"], page.Parameter("redirect_uri"));
    EXPECT_EQ(quilloauth::ChallengeOf(form["code_verifier"]), page.Parameter("code_challenge"));
    EXPECT_THAT(page.url, Not(HasSubstr(form["code_verifier"])));

    EXPECT_EQ(session->GetAccessToken().Get(), "secret-access-token");
    EXPECT_EQ(MakeSession("", tokenPath)->GetAccessToken().Get(), "secret-access-token");
    executor.AdvanceBy(10min);
    EXPECT_TRUE(failures.All().empty()) << "the time limit is for the wait only";
}

TEST_F(BrowserSignInTest, GoesOnWaitingWhateverElseComes) {
    auto login = Login();
    auto const page = browser.NextPage();
    auto const back = page.Parameter("redirect_uri");
    auto const origin = back.substr(0, back.find("/signed"));
    auto const state = "&state=" + page.Parameter("state");
    std::pair<std::string, int> const rows[] = {
        {origin + "/", 404},
        {origin + "/favicon.ico", 404},
        {origin + "/signed/in/?code=x" + state, 404},
        {origin + "/signed/i?n&code=x" + state, 404},
        {back, 400},
        {back + "?", 400},
        {back + "?code=x", 400},
        {back + "?code=x&state=", 400},
        {back + "?code=x" + state + "x", 400},
        {back + "?code=x&state=" + std::string(43, 'A'), 400},
        {back + "?code=x" + state + state, 400},
        {back + "?error=access_denied", 400},
        {back + "?" + state, 400},
        {back + "?code=" + state, 400},
        {back + "?code=x&code=y" + state, 400},
        {back + "?code=x&error=access_denied" + state, 400},
    };
    for (auto const& [url, status] : rows)
        EXPECT_THAT(FakeBrowser::Visit(url), StartsWith("HTTP/1.1 " + std::to_string(status) + " "))
            << url;
    for (std::string const& request :
         {"POST /signed/in?code=x" + state + " HTTP/1.1\r\n\r\n", std::string("\r\n\r\n"),
          std::string("GET\r\n\r\n"), "GET /signed/in?code=x" + state + "\r\n\r\n"}) {
        LocalConnection const connection(PortOf(back));
        connection.Say(request);
        EXPECT_THAT(connection.ReadAll(), StartsWith("HTTP/1.1 404 ")) << request;
    }

    EXPECT_EQ(FakeBrowser::Visit(back + "?code=x" + state + std::string(100'000, 'a')), "");

    // Connections that say nothing, as browsers make them ahead of need, and one that is slow.
    LocalConnection const slow(PortOf(back));
    slow.Say("GET /signed/");
    std::vector<LocalConnection> silent;
    for (int i = 0; i < 10; ++i)
        silent.emplace_back(PortOf(back));
    EXPECT_THAT(FakeBrowser::Visit(origin + "/"), StartsWith("HTTP/1.1 404 "));
    slow.Say("in?code=secret" + state + " HTTP/1.1\r\n\r\n");
    EXPECT_THAT(slow.ReadAll(), StartsWith("HTTP/1.1 200 "));
    EXPECT_EQ(login.Result(), kSessionExists);
}

TEST_F(BrowserSignInTest, TooManyConnectionsCloseTheOldest) {
    auto login = Login();
    auto const page = browser.NextPage();
    LocalConnection const oldest(PortOf(page.Parameter("redirect_uri")));
    std::vector<LocalConnection> silent;
    for (int i = 0; i < 40; ++i)
        silent.emplace_back(PortOf(page.Parameter("redirect_uri")));
    EXPECT_EQ(oldest.ReadAll(), "");
    EXPECT_THAT(FakeBrowser::Visit(page.ReturnAddress("secret")), HasSubstr("200"));
    EXPECT_EQ(login.Result(), kSessionExists);
}

TEST_F(BrowserSignInTest, EndsWithAReasonWhenNobodyIsSignedIn) {
    using Page = FakeBrowser::Page;
    auto const comeBack = [](Page const& page, std::string const& query, char const* heading) {
        auto const answer = FakeBrowser::Visit(page.Parameter("redirect_uri") + "?" + query +
                                               "&state=" + page.Parameter("state"));
        EXPECT_THAT(answer, HasSubstr(heading));
    };
    struct Row {
        std::function<void(Page const&)> user;
        char const* says;
        SignInStage stage;
        int httpStatus = 0;
    };
    Row const rows[] = {
        {[&](Page const& page) { comeBack(page, "error=access_denied", "Not signed in"); },
         "Could not sign in: the access was denied in the browser; sign in again",
         SignInStage::Denied},
        {[&](Page const& page) {
             comeBack(page, "error=server_error&error_description=Down%0Afor+now", "Not signed in");
         },
         "answered in the browser: Down for now.", SignInStage::Refused},
        {[&](Page const& page) {
             comeBack(page, "error=no&error_description=Not+for+" + page.Parameter("state"),
                      "Not signed in");
         },
         "answered in the browser: Not for ....", SignInStage::Refused},
        {[&](Page const& page) { comeBack(page, "code=secret%2Fcode", "Thank you"); },
         "400 (Too late for ... and ....)", SignInStage::Refused, 400},
        {[](Page const& page) { page.onFailure("there is none"); },
         "the browser cannot be opened: there is none; see that", SignInStage::NoBrowser},
        {[&](Page const&) { executor.AdvanceBy(10min); }, "for ten minutes; try again.",
         SignInStage::Expired},
    };
    transport.SetResponder([](quillosdk::HttpRequest const& request) {
        std::map<std::string, std::string> form;
        for (auto const& [name, value] : quillocommon::ParseQuery(*request.body))
            form[name] = value;
        if (!form.contains("code"))
            return quillosdk::HttpResponse{400, {}, R"({"error":"unauthorized_client"})"};
        return quillosdk::HttpResponse{
            400,
            {},
            R"({"error":"invalid_grant","error_description":"Too late for secret\/code and )" +
                form["code_verifier"] + R"(."})"};
    });
    for (auto const& row : rows) {
        SCOPED_TRACE(row.says);
        auto const told = failures.All().size();
        auto login = Login();
        auto const page = browser.NextPage();
        row.user(page);
        EXPECT_EQ(login.Result(), kNotSignedIn);
        ASSERT_EQ(failures.All().size(), told + 1);
        EXPECT_THAT(failures.All().back().message, HasSubstr(row.says));
        EXPECT_THAT(failures.All().back().message, Not(HasSubstr(page.Parameter("state"))));
        EXPECT_EQ(failures.All().back().httpStatus, row.httpStatus);
        EXPECT_EQ(stages.All().back(), row.stage);
        EXPECT_FALSE(IsOpen(page));
    }
    executor.AdvanceBy(10min - 1ms);
    EXPECT_EQ(failures.All().size(), std::size(rows));
}

TEST_F(BrowserSignInTest, ThePageThatIsLostIsOpenedAgain) {
    session->ReopenBrowser();
    auto login = Login();
    auto const page = browser.NextPage();
    EXPECT_THAT(stages.All(), ElementsAre(SignInStage::InBrowser));
    session->ReopenBrowser();
    EXPECT_EQ(executor.RunDue(), 1u);
    EXPECT_EQ(browser.NextPage().url, page.url) << "one sign-in, one proof";
    EXPECT_THAT(FakeBrowser::Visit(page.ReturnAddress("secret")), HasSubstr("Thank you"));
    EXPECT_EQ(login.Result(), kSessionExists);
    EXPECT_EQ(stages.All().back(), SignInStage::Asking);
    quilloauth::SetBrowserOpener([](auto const&, auto const&) { ADD_FAILURE() << "opened"; });
    session->ReopenBrowser();
    executor.RunDue();
}

TEST_F(BrowserSignInTest, WaitsTenMinutes) {
    auto login = Login();
    auto const page = browser.NextPage();
    executor.AdvanceBy(10min - 1ms);
    EXPECT_TRUE(IsOpen(page));
    executor.AdvanceBy(1ms);
    EXPECT_EQ(login.Result(), kNotSignedIn);
}

TEST_F(BrowserSignInTest, ThereIsNoneWithoutAWayBackOrABrowser) {
    for (char const* redirectURI :
         {"editor:signed-in", "https://127.0.0.1/", "http://localhost/", "http://[::1]/",
          "http://127.0.0.2/", "http://editor.example/", "http://127.0.0.1/?a",
          "http://u@127.0.0.1/", "http://127.0.0.1/#f", ""}) {
        session->Stop();
        session = MakeSession(redirectURI, tokenPath);
        EXPECT_EQ(session->Login().GetResult(), kNotSignedIn) << redirectURI;
        EXPECT_THAT(failures.All().back().message, HasSubstr("redirect URI is none of the form"));
    }
    session->Stop();
    session = MakeSession("http://127.0.0.1/", tokenPath);
    quilloauth::SetBrowserOpener(
        [](auto const&, auto const&) { throw std::runtime_error("no display"); });
    EXPECT_EQ(session->Login().GetResult(), kNotSignedIn);
    EXPECT_THAT(failures.All().back().message, HasSubstr("cannot be opened: no display;"));
}

TEST_F(BrowserSignInTest, IsCalledOffWithoutAWord) {
    std::optional<Attempt> next;
    std::function<void()> const ways[] = {
        [&] { session->CancelLogin(); },
        [&] { EXPECT_TRUE(session->Logout().IsSuccess()); },
        [&] { next.emplace(Login()); },
        [&] { session->Stop(); },
    };
    for (auto const& callOff : ways) {
        auto login = next ? std::move(*next) : Login();
        next.reset();
        auto const page = browser.NextPage();
        callOff();
        EXPECT_EQ(login.Result(), kNotSignedIn);
        EXPECT_EQ(stages.All().back(), SignInStage::InBrowser) << "who called it off knows";
        EXPECT_FALSE(IsOpen(page));
        EXPECT_TRUE(failures.All().empty());
    }
    EXPECT_EQ(session->Login().GetResult(), kNotSignedIn) << "after Stop";
}

TEST_F(BrowserSignInTest, ASignOutBeforeTheBrowserOpensKeepsItShut) {
    transport.SetResponder({});
    auto login = Login();
    transport.WaitForCount(1);
    EXPECT_TRUE(session->Logout().IsSuccess());
    quilloauth::SetBrowserOpener([](auto const&, auto const&) { ADD_FAILURE() << "opened"; });
    transport.Answer(0, 400, R"({"error":"unauthorized_client"})");
    EXPECT_EQ(login.Result(), kNotSignedIn);
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(BrowserSignInTest, TheEndDoesNotWaitForTheUser) {
    auto const nobody = session->GetAccessToken();
    auto const login = nobody.Then(nobody.GetExecutor(),
                                   [this](auto const&) { return session->Login().GetResult(); });
    auto const page = browser.NextPage();  // the session's own thread waits now
    auto const behind = session->GetAccessToken();
    session->Stop();
    EXPECT_EQ(login.Get(), kNotSignedIn);
    EXPECT_THROW(static_cast<void>(behind.Get()), moxcore::async::CancelledException);
    EXPECT_FALSE(IsOpen(page));
    page.onFailure("nobody waits for this any more");
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(BrowserSignInTest, TheCodeGoesToTheServiceThatTheUserWasSentTo) {
    auto login = Login();
    auto const page = browser.NextPage();
    ASSERT_TRUE(quillocommon::SetServiceAddress("https://another.test"));
    EXPECT_THAT(FakeBrowser::Visit(page.ReturnAddress("secret")), HasSubstr("Thank you"));
    EXPECT_EQ(login.Result(), kSessionExists);
    EXPECT_THAT(transport.At(1).url, StartsWith(std::string(transport.kAddress) + "/"));
}

}  // namespace
