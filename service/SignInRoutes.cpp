#include <nlohmann/json.hpp>

#include "service/Api.h"
#include "service/ApiError.h"
#include "service/AuthorizationCodes.h"
#include "service/Call.h"
#include "service/LocalCaller.h"
#include "service/OAuthFields.h"
#include "service/Routes.h"
#include "service/SampleData.h"
#include "service/Sessions.h"

namespace quilloservice {

using nlohmann::json;

namespace {

TokenPair Grant(Call& call, Sessions& sessions, AuthorizationCodes& codes, bool trustLocalUser) {
    OAuthFields form = OAuthFields::InBody(call);
    const std::string& client = form.Require("client_id");
    const std::string& grant = form.Require("grant_type");
    if (grant == "authorization_code") {
        auto pair = codes.Redeem(form.Require("code"), {client, form.Require("redirect_uri"),
                                                        form.Require("code_verifier")});
        if (!pair) {
            throw OAuthError{"invalid_grant",
                             "The code is not valid any more, or was issued for something else."};
        }
        return *pair;
    }
    if (grant == "urn:quillo:grant-type:local-user") {
        if (!trustLocalUser || !IsLocalProgram(call)) {
            throw OAuthError{"unauthorized_client",
                             "The local user is signed in only by a service that was started with "
                             "--trust-local-user, and only for a program on the same machine."};
        }
        return sessions.SignIn(SampleUserId(), client);
    }
    if (grant == "refresh_token") {
        auto pair = sessions.Refresh(form.Require("refresh_token"), client);
        if (!pair) throw OAuthError{"invalid_grant", "The refresh token is not valid any more."};
        return *pair;
    }
    throw OAuthError{"unsupported_grant_type", "There is no such grant_type here."};
}

/// Runs `answer`, with errors in the token end points' own form.
void InOAuthForm(Call& call, const std::function<void()>& answer) {
    call.response.SetHeader("Cache-Control", "no-store");
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

void AddSignInRoutes(Api& api, Sessions& sessions, AuthorizationCodes& codes, bool trustLocalUser) {
    api.Add({"POST", "/oauth/token", [&sessions, &codes, trustLocalUser](Call& call) {
                 InOAuthForm(call, [&] {
                     TokenPair pair = Grant(call, sessions, codes, trustLocalUser);
                     call.Answer(200, {{"access_token", pair.access},
                                       {"token_type", "Bearer"},
                                       {"expires_in", Sessions::kAccessSeconds},
                                       {"refresh_token", pair.refresh}});
                 });
             }});
    api.Add({"POST", "/oauth/revoke", [&sessions](Call& call) {
                 InOAuthForm(call, [&] {
                     sessions.Revoke(OAuthFields::InBody(call).Require("token"));
                     call.Answer(200, json::object());
                 });
             }});
}

}  // namespace quilloservice
