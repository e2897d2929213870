#include <memory>
#include <optional>
#include <vector>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/oauth/AuthorizationCodes.h"
#include "service/oauth/AuthorizationRequest.h"
#include "service/oauth/FormTokens.h"
#include "service/oauth/OAuthFields.h"
#include "service/pages/SignInPage.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/Routes.h"
#include "service/store/SampleData.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

constexpr char const* kPath = "/oauth/authorize";
constexpr std::string_view kCookie = "quillo_browser=";
constexpr std::size_t kCookieDigits = 64;

/// The secret that this browser has been given, empty when it has none.
std::string BrowserOf(Call const& call) {
    std::string cookies = call.Header("Cookie").value_or("");
    auto at = cookies.find(kCookie);
    if (at == std::string::npos) return {};
    std::string secret = cookies.substr(at + kCookie.size(), kCookieDigits);
    bool wellFormed = secret.size() == kCookieDigits &&
                      secret.find_first_not_of("0123456789abcdef") == std::string::npos;
    return wellFormed ? secret : std::string();
}

std::string GiveBrowserASecret(Call& call) {
    std::string secret = ToHex(RandomBytes(kCookieDigits / 2));
    call.response.SetHeader("Set-Cookie", std::string(kCookie) + secret + "; Path=" + kPath +
                                              "; HttpOnly; SameSite=Strict");
    return secret;
}

/// The names of those who may sign in; the sample user's first.
std::vector<std::string> ListUsers(Store const& store) {
    return store.Read([](Database& database) {
        Statement row =
            database.Query("SELECT name FROM users ORDER BY id <> ?, name", SampleUserId());
        std::vector<std::string> users;
        while (row.Next())
            users.push_back(row.Text(0));
        return users;
    });
}

/// The ID of the user of this name; nothing when there is none.
std::optional<std::string> FindUser(Store const& store, std::string const& name) {
    return store.Read([&](Database& database) -> std::optional<std::string> {
        Statement row = database.Query("SELECT id FROM users WHERE name = ?", name);
        if (!row.Next()) return std::nullopt;
        return row.Text(0);
    });
}

/// The end point to which programs send their users' browsers. Any thread.
class AuthorizeEndpoint {
public:
    AuthorizeEndpoint(Store const& store, AuthorizationCodes& codes, Clock const& clock)
        : store(store), codes(codes), tokens(clock) {}

    void Show(Call& call) const {
        Answer(call, [&] {
            AuthorizationRequest request =
                ReadAuthorizationRequest(OAuthFields(call.request.parameters));
            std::string browser = BrowserOf(call);
            if (browser.empty()) browser = GiveBrowserASecret(call);
            std::vector<std::string> users = ListUsers(store);
            AnswerForm(call, 200, {request, tokens.Make(browser, request), users, users.front()});
        });
    }

    void Decide(Call& call) const {
        Answer(call, [&] {
            OAuthFields fields = OAuthFields::InBody(call.request, call.GetBody());
            AuthorizationRequest request = ReadAuthorizationRequest(fields);
            std::string browser = BrowserOf(call);
            std::string const& token = fields.Require("form_token");
            if (browser.empty() || !tokens.IsGood(token, browser, request)) {
                throw UntrustedRequest{"This page is too old, or is not one of this service."};
            }
            if (fields.Require("decision") != "allow") {
                throw RefusedRequest{
                    LocationOfError(request, "access_denied", "The user has denied the access.")};
            }
            Allow(call, request, fields);
        });
    }

private:
    void Allow(Call& call, AuthorizationRequest const& request, OAuthFields const& fields) const {
        std::string name = fields.Find("user").value_or("");
        auto user = FindUser(store, name);
        if (user && fields.Find("password") == kSamplePassword) {
            return Redirect(call, LocationOfCode(request, codes.Issue(*user, request)));
        }
        AnswerForm(call, 403, {request, *fields.Find("form_token"), ListUsers(store), name, true});
    }

    static void AnswerForm(Call& call, int status, signinpage::Form const& form) {
        call.AnswerPage(status, signinpage::RenderForm(form), signinpage::FormPolicy(form.request));
    }

    /// Runs `answer` and turns what it throws into a page or a redirect.
    static void Answer(Call& call, std::function<void()> const& answer) {
        call.response.SetHeader("Cache-Control", "no-store");
        call.response.SetHeader("X-Frame-Options", "DENY");
        try {
            answer();
        } catch (RefusedRequest const& refused) {
            Redirect(call, refused.location);
        } catch (UntrustedRequest const& untrusted) {
            AnswerRefusal(call, untrusted.reason);
        } catch (OAuthError const& error) {
            AnswerRefusal(call, error.description);
        }
    }

    static void Redirect(Call& call, std::string const& location) {
        call.response.SetHeader("Referrer-Policy", "no-referrer");
        call.response.Redirect(303, location);
    }

    static void AnswerRefusal(Call& call, std::string const& reason) {
        call.AnswerPage(400, signinpage::RenderRefusal(reason), signinpage::RefusalPolicy());
    }

    Store const& store;
    AuthorizationCodes& codes;
    FormTokens tokens;
};

}  // namespace

void AddAuthorizeRoutes(Api& api, Store const& store, AuthorizationCodes& codes,
                        Clock const& clock) {
    auto endpoint = std::make_shared<AuthorizeEndpoint>(store, codes, clock);
    api.Add({"GET", kPath, [endpoint](Call& call) { endpoint->Show(call); }});
    api.Add({"POST", kPath, [endpoint](Call& call) { endpoint->Decide(call); }});
}

}  // namespace quilloservice
