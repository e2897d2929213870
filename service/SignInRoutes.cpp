#include <httplib.h>

#include <nlohmann/json.hpp>

#include "service/Api.h"
#include "service/ApiError.h"
#include "service/Call.h"
#include "service/LocalCaller.h"
#include "service/Routes.h"
#include "service/SampleData.h"
#include "service/Sessions.h"

namespace quilloservice {

using nlohmann::json;

namespace {

/// An answer of RFC 6749's form.
struct OAuthError {
    std::string error;
    std::string description;
};

class Form {
public:
    explicit Form(Call& call) {
        if (!call.Header("Content-Type")
                 .value_or("")
                 .starts_with("application/x-www-form-urlencoded")) {
            throw OAuthError{"invalid_request", "The body has to be a form."};
        }
        httplib::detail::parse_query_text(call.ReadSmallBody(), fields_);
    }

    [[nodiscard]] const std::string& Field(const std::string& name) const {
        auto [first, last] = fields_.equal_range(name);
        if (first == last || first->second.empty() || std::next(first) != last) {
            throw OAuthError{"invalid_request", name + " has to be given once."};
        }
        return first->second;
    }

private:
    httplib::Params fields_;
};

TokenPair Grant(Call& call, Sessions& sessions, bool trustLocalUser) {
    Form form(call);
    const std::string& client = form.Field("client_id");
    const std::string& grant = form.Field("grant_type");
    if (grant == "urn:quillo:grant-type:local-user") {
        if (!trustLocalUser || !IsLocalProgram(call)) {
            throw OAuthError{"unauthorized_client",
                             "The local user is signed in only by a service that was started with "
                             "--trust-local-user, and only for a program on the same machine."};
        }
        return sessions.SignIn(SampleUserId(), client);
    }
    if (grant == "refresh_token") {
        auto pair = sessions.Refresh(form.Field("refresh_token"), client);
        if (!pair) throw OAuthError{"invalid_grant", "The refresh token is not valid any more."};
        return *pair;
    }
    throw OAuthError{"unsupported_grant_type", "There is no such grant_type here."};
}

/// Runs `answer`, with errors in the token end points' own form.
void InOAuthForm(Call& call, const std::function<void()>& answer) {
    call.response.set_header("Cache-Control", "no-store");
    try {
        answer();
    } catch (const OAuthError& error) {
        call.Answer(400, {{"error", error.error}, {"error_description", error.description}});
    } catch (const ApiError& error) {
        call.Answer(error.status,
                    {{"error", "invalid_request"}, {"error_description", error.what()}});
    }
}

}  // namespace

void AddSignInRoutes(Api& api, Sessions& sessions, bool trustLocalUser) {
    api.Add({"POST", "/oauth/token", [&sessions, trustLocalUser](Call& call) {
                 InOAuthForm(call, [&] {
                     TokenPair pair = Grant(call, sessions, trustLocalUser);
                     call.Answer(200, {{"access_token", pair.access},
                                       {"token_type", "Bearer"},
                                       {"expires_in", Sessions::kAccessSeconds},
                                       {"refresh_token", pair.refresh}});
                 });
             }});
    api.Add({"POST", "/oauth/revoke", [&sessions](Call& call) {
                 InOAuthForm(call, [&] {
                     sessions.Revoke(Form(call).Field("token"));
                     call.Answer(200, json::object());
                 });
             }});
}

}  // namespace quilloservice
