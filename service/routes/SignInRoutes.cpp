#include <memory>
#include <nlohmann/json.hpp>

#include "service/base/ApiError.h"
#include "service/oauth/AuthorizationCodes.h"
#include "service/oauth/LocalUserSecret.h"
#include "service/oauth/OAuthFields.h"
#include "service/oauth/OAuthMetadata.h"
#include "service/oauth/Sessions.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/LocalCaller.h"
#include "service/routes/RateLimiter.h"
#include "service/routes/RequestCount.h"
#include "service/routes/Routes.h"
#include "service/store/SampleData.h"

namespace quilloservice {

using nlohmann::json;

namespace {

TokenPair Grant(Call& call, Sessions& sessions, AuthorizationCodes& codes,
                LocalUserSecret const* localUser) {
    OAuthFields form = OAuthFields::InBody(call.request, call.GetBody());
    ClientId client = form.RequireClient();
    std::string const& grant = form.Require("grant_type");
    if (grant == "authorization_code") {
        auto pair = codes.Redeem(form.Require("code"), {client, form.Require("redirect_uri"),
                                                        form.Require("code_verifier")});
        if (!pair) {
            throw OAuthError{"invalid_grant",
                             "The code has expired, was used, or was issued for another request."};
        }
        return *pair;
    }
    if (grant == "urn:quillo:grant-type:local-user") {
        if (localUser == nullptr || !IsLocalProgram(call) ||
            !localUser->Is(form.Find("local_user_secret").value_or(""))) {
            throw OAuthError{"unauthorized_client",
                             "The local-user grant needs a service started with "
                             "--trust-local-user, and a program on the same machine that sends "
                             "the secret from its user's file."};
        }
        return sessions.SignIn(SampleUserId(), client);
    }
    if (grant == "refresh_token") {
        auto pair = sessions.Refresh(form.Require("refresh_token"), client);
        if (!pair) throw OAuthError{"invalid_grant", "The refresh token is not valid."};
        return *pair;
    }
    throw OAuthError{"unsupported_grant_type", "This grant_type is not supported."};
}

/// The token and revocation endpoints. Any thread.
class TokenEndpoint {
public:
    TokenEndpoint(Sessions& sessions, AuthorizationCodes& codes, LocalUserSecret const* localUser,
                  std::optional<RateLimit> limit)
        : sessions(sessions), codes(codes), localUser(localUser), limiter(limit) {}

    void Grant(Call& call) {
        Respond(call, [&] {
            TokenPair pair = quilloservice::Grant(call, sessions, codes, localUser);
            call.Respond(200, {{"access_token", pair.access},
                               {"token_type", "Bearer"},
                               {"expires_in", Sessions::kAccessSeconds},
                               {"refresh_token", pair.refresh}});
        });
    }

    void Revoke(Call& call) {
        Respond(call, [&] {
            OAuthFields form = OAuthFields::InBody(call.request, call.GetBody());
            if (form.Find("client_id")) static_cast<void>(form.RequireClient());
            sessions.Revoke(form.Require("token"));
            call.Respond(200, json::object());
        });
    }

    void Describe(Call& call) const {
        call.Respond(200, DescribeAuthorizationServer(call.GetOwnAddress(), localUser != nullptr));
    }

private:
    /// Counts the request and runs `respond`; errors get OAuth's form (RFC 6749, 5.2).
    void Respond(Call& call, std::function<void()> const& respond) {
        call.response.SetHeader("Cache-Control", "no-store");
        call.response.SetHeader("Pragma", "no-cache");
        try {
            CountRequest(call, limiter, RequesterAt(call), RequestKind::Tokens);
            respond();
        } catch (OAuthError const& error) {
            call.Respond(400, {{"error", error.error}, {"error_description", error.description}});
        } catch (ApiError const& error) {
            if (error.retryAfter > 0) {
                call.response.SetHeader("Retry-After", std::to_string(error.retryAfter));
            }
            call.Respond(error.status,
                         {{"error", error.status == 400 ? "invalid_request" : error.code},
                          {"error_description", error.what()}});
        }
    }

    Sessions& sessions;
    AuthorizationCodes& codes;
    LocalUserSecret const* localUser;
    RateLimiter limiter;
};

}  // namespace

void AddSignInRoutes(Api& api, Sessions& sessions, AuthorizationCodes& codes,
                     LocalUserSecret const* localUser, std::optional<RateLimit> limit) {
    auto endpoint = std::make_shared<TokenEndpoint>(sessions, codes, localUser, limit);
    api.Add({"POST", "/oauth/token", [endpoint](Call& call) { endpoint->Grant(call); }});
    api.Add({"POST", "/oauth/revoke", [endpoint](Call& call) { endpoint->Revoke(call); }});
    api.Add({"GET", "/.well-known/oauth-authorization-server",
             [endpoint](Call& call) { endpoint->Describe(call); }});
}

}  // namespace quilloservice
