#include "quilloauth/TokenRequests.h"

#include <memory>
#include <utility>
#include <vector>

#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/RetryLoop.h"

namespace quilloauth {
namespace {

using quillosdk::Answer;
using quillosdk::HttpRequest;

/// Someone waits for a sign-in.
constexpr quillosdk::RetryLimits kLimits{.attempts = 5, .patience = std::chrono::seconds(30)};

using Form = std::vector<std::pair<std::string, std::string>>;

Answer PostForm(char const* path, Form const& fields) {
    auto const address = quillocommon::GetServiceAddress();
    if (address.empty())
        return Answer::CreateFailed(quillosdk::kBadRequest,
                                    "no service address is set (QUILLO_SERVICE_URL)", nullptr);
    std::string body;
    for (auto const& [name, value] : fields)
        body += (body.empty() ? "" : "&") + name + "=" + quillocommon::PercentEncode(value);
    HttpRequest const request{.method = "POST",
                              .url = address + path,
                              .headers = {{"Content-Type", "application/x-www-form-urlencoded"}},
                              .body = std::make_shared<std::string const>(std::move(body))};
    return quillosdk::SendWithRetries(
        [request] { return quillosdk::Transport::Get()->Send(request); },
        std::make_shared<quillosdk::RetryPolicy>(kLimits));
}

moxcore::async::Future<Grant> RequestGrant(Form const& fields) {
    return PostForm("/oauth/token", fields).Then([](Answer const& answer) -> Grant {
        auto const response = answer.Get();
        if (response->status != 200)
            return GrantRefused{response->status, quillosdk::ReadServiceError(response->body).code,
                                quillosdk::DescribeRefusal(SignInTask(), *response)};
        auto granted = quillosdk::ReadGrantedTokens(response->body);
        return Tokens{std::move(granted.accessToken), std::move(granted.refreshToken),
                      moxcore::threads::Now() + std::chrono::seconds(granted.expiresInSeconds)};
    });
}

}  // namespace

moxcore::async::Future<Grant> RequestLocalUserGrant(std::string const& clientID) {
    return RequestGrant(
        {{"client_id", clientID}, {"grant_type", "urn:quillo:grant-type:local-user"}});
}

moxcore::async::Future<Grant> RequestRefresh(std::string const& clientID,
                                             std::string const& refreshToken) {
    return RequestGrant({{"client_id", clientID},
                         {"grant_type", "refresh_token"},
                         {"refresh_token", refreshToken}});
}

void RequestRevocation(std::string const& refreshToken) {
    static_cast<void>(PostForm("/oauth/revoke", {{"token", refreshToken}}));
}

quillosdk::Task SignInTask() {
    return {quillocommon::Step::SignIn, "sign in"};
}

}  // namespace quilloauth
