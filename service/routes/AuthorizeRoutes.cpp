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

/// The browser's ID from its cookie; nothing if it has none.
std::optional<BrowserId> FindBrowser(Call const& call) {
    std::string cookies = call.Header("Cookie").value_or("");
    auto at = cookies.find(kCookie);
    if (at == std::string::npos) return std::nullopt;
    return BrowserId::Parse(
        std::string_view(cookies).substr(at + kCookie.size(), BrowserTag::kDigits));
}

BrowserId GiveBrowserId(Call& call) {
    BrowserId browser(ToHex(RandomBytes(BrowserTag::kDigits / 2)));
    call.response.SetHeader("Set-Cookie", std::string(kCookie) + browser.GetText() +
                                              "; Path=" + kPath + "; HttpOnly; SameSite=Strict");
    return browser;
}

/// The names of all users, the sample user first.
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

std::optional<UserId> FindUser(Store const& store, std::string const& name) {
    if (!IsShowableText(name)) return std::nullopt;
    return store.Read([&](Database& database) -> std::optional<UserId> {
        Statement row = database.Query("SELECT id FROM users WHERE name = ?", name);
        if (!row.Next()) return std::nullopt;
        return row.Id<UserId>(0);
    });
}

/// The authorization endpoint. Any thread.
class AuthorizeEndpoint {
public:
    AuthorizeEndpoint(Store const& store, AuthorizationCodes& codes, Clock const& clock)
        : store(store), codes(codes), tokens(clock) {}

    void Show(Call& call) const {
        Respond(call, [&] {
            AuthorizationRequest request =
                ReadAuthorizationRequest(OAuthFields(call.request.parameters));
            std::optional<BrowserId> browser = FindBrowser(call);
            if (!browser) browser = GiveBrowserId(call);
            std::vector<std::string> users = ListUsers(store);
            RespondWithForm(call, 200,
                            {request, tokens.Make(*browser, request), users, users.front()});
        });
    }

    void Decide(Call& call) const {
        Respond(call, [&] {
            OAuthFields fields = OAuthFields::InBody(call.request, call.GetBody());
            AuthorizationRequest request = ReadAuthorizationRequest(fields);
            std::optional<BrowserId> browser = FindBrowser(call);
            std::string const& token = fields.Require("form_token");
            if (!browser || !tokens.IsGood(token, *browser, request)) {
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
        RespondWithForm(call, 403,
                        {request, *fields.Find("form_token"), ListUsers(store), name, true});
    }

    static void RespondWithForm(Call& call, int status, signinpage::Form const& form) {
        call.RespondWithPage(status, signinpage::RenderForm(form),
                             signinpage::FormPolicy(form.request));
    }

    /// Runs `respond` and turns its exceptions into a page or a redirect.
    static void Respond(Call& call, std::function<void()> const& respond) {
        call.response.SetHeader("Cache-Control", "no-store");
        call.response.SetHeader("X-Frame-Options", "DENY");
        try {
            respond();
        } catch (RefusedRequest const& refused) {
            Redirect(call, refused.location);
        } catch (UntrustedRequest const& untrusted) {
            RespondWithRefusal(call, untrusted.reason);
        } catch (OAuthError const& error) {
            RespondWithRefusal(call, error.description);
        }
    }

    static void Redirect(Call& call, std::string const& location) {
        call.response.SetHeader("Referrer-Policy", "no-referrer");
        call.response.Redirect(303, location);
    }

    static void RespondWithRefusal(Call& call, std::string const& reason) {
        call.RespondWithPage(400, signinpage::RenderRefusal(reason), signinpage::RefusalPolicy());
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
