#include "quilloauth/TokenRequests.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "moxcore/utility/NoDestructor.h"
#include "quilloauth/SignInProgress.h"
#include "quillocommon/Saturating.h"
#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/Redact.h"
#include "quillosdk/RetryLoop.h"

namespace quilloauth {
namespace {

using quillosdk::Answer;
using quillosdk::HttpRequest;

/// Someone waits for a sign-in.
constexpr quillosdk::RetryLimits kLimits{.attempts = 5, .patience = std::chrono::seconds(30)};

/// How long closing waits for a service that does not answer.
constexpr std::chrono::seconds kPatienceAtEnd{2};

using Form = std::vector<std::pair<std::string, std::string>>;

/// What a form may hold that is no secret. Anything else is one.
bool IsPublic(std::string_view field) {
    return field == "client_id" || field == "grant_type" || field == "redirect_uri";
}

Answer Send(HttpRequest const& request) {
    return quillosdk::Transport::Get()->Send(request);
}

Answer PostForm(std::string const& url, Form const& fields,
                std::shared_ptr<quillosdk::RetryPolicy> policy, std::stop_token const& calledOff,
                Answer (*send)(HttpRequest const&) = Send) {
    std::string body;
    for (auto const& [name, value] : fields)
        body += (body.empty() ? "" : "&") + name + "=" + quillocommon::PercentEncode(value);
    HttpRequest const request{.method = "POST",
                              .url = url,
                              .headers = {{"Content-Type", "application/x-www-form-urlencoded"}},
                              .body = std::make_shared<std::string const>(std::move(body))};
    return quillosdk::SendWithRetries(
        [request, send, calledOff] {
            return calledOff.stop_requested() ? quillosdk::AnswerPromise().GetFuture()  // cancelled
                                              : send(request);
        },
        std::move(policy));
}

moxcore::async::Future<Grant> RequestGrant(std::string const& address, Form const& fields,
                                           std::stop_token const& calledOff = {}) {
    if (address.empty())
        return moxcore::async::Future<Grant>::CreateFailed(
            quillosdk::kBadRequest, quillocommon::WhyNoServiceAddress(), nullptr);
    auto const policy = std::make_shared<quillosdk::RetryPolicy>(kLimits);
    policy->SetWaitListener([calledOff](std::optional<moxcore::threads::TimePoint> since) {
        if (calledOff.stop_requested()) return;
        since ? TellSignIn(SignInStage::Waiting, *since) : TellSignIn(SignInStage::Asking);
    });
    auto const answered = PostForm(address + "/oauth/token", fields, policy, calledOff);
    return answered.Then([fields](Answer const& answer) -> Grant {
        auto const response = answer.Get();
        for (auto const& [name, value] : fields)
            if (!IsPublic(name)) quillosdk::RedactRefusal(*response, value);
        if (response->status < 200 || response->status > 299)
            return GrantRefused{response->status, quillosdk::ReadServiceError(response->body).code,
                                quillosdk::DescribeRefusal(SignInTask(), *response)};
        auto granted = quillosdk::ReadGrantedTokens(response->body);
        return Tokens{std::move(granted.accessToken), std::move(granted.refreshToken),
                      quillocommon::TimeAfter(moxcore::threads::Now(),
                                              std::chrono::seconds(granted.expiresInSeconds))};
    });
}

/// The revocations that are on their way: not those that wait to be repeated, so that a service
/// that is down holds nobody up.
class RevocationsUnderWay {
public:
    void Add(Answer const& answer) {
        {
            std::lock_guard lock(mutex);
            ++count;
        }
        answer.OnComplete([this](Answer const&) {
            std::lock_guard lock(mutex);
            if (--count == 0) none.notify_all();
        });
    }

    void Await() {
        std::unique_lock lock(mutex);
        none.wait_for(lock, kPatienceAtEnd, [this] { return count == 0; });
    }

private:
    std::mutex mutex;
    std::condition_variable none;
    int count = 0;  // guarded by mutex
};

/// Never destroyed: answers may still come while the process ends, which waits for them.
RevocationsUnderWay& TheRevocations() {
    struct AwaitAtExit {
        RevocationsUnderWay& revocations;
        ~AwaitAtExit() { revocations.Await(); }
    };
    static moxcore::utility::NoDestructor<RevocationsUnderWay> revocations;
    // What is made first ends last: the transport must still run while its answers are waited for.
    static_cast<void>(quillosdk::Transport::Get());
    static AwaitAtExit const awaitAtExit{*revocations};
    return *revocations;
}

Answer SendRevocation(HttpRequest const& request) {
    auto answer = Send(request);
    TheRevocations().Add(answer);
    return answer;
}

}  // namespace

moxcore::async::Future<Grant> RequestLocalUserGrant(std::string const& address,
                                                    std::string const& clientID,
                                                    std::string const& secret,
                                                    std::stop_token const& calledOff) {
    Form form{{"client_id", clientID}, {"grant_type", "urn:quillo:grant-type:local-user"}};
    if (!secret.empty()) form.emplace_back("local_user_secret", secret);
    return RequestGrant(address, form, calledOff);
}

moxcore::async::Future<Grant> RequestCodeGrant(std::string const& address,
                                               std::string const& clientID,
                                               AuthorizationCode const& code,
                                               std::stop_token const& calledOff) {
    return RequestGrant(address,
                        {{"client_id", clientID},
                         {"grant_type", "authorization_code"},
                         {"code", code.code},
                         {"redirect_uri", code.redirectURI},
                         {"code_verifier", code.verifier}},
                        calledOff);
}

moxcore::async::Future<Grant> RequestRefresh(std::string const& address,
                                             std::string const& clientID,
                                             std::string const& refreshToken) {
    return RequestGrant(address, {{"client_id", clientID},
                                  {"grant_type", "refresh_token"},
                                  {"refresh_token", refreshToken}});
}

void RequestRevocation(std::string const& address, std::string const& refreshToken) {
    static_cast<void>(PostForm(address + "/oauth/revoke", {{"token", refreshToken}},
                               std::make_shared<quillosdk::RetryPolicy>(kLimits), {},
                               SendRevocation));
}

void PrepareToRevoke() {
    static_cast<void>(TheRevocations());
}

void AwaitRevocations() {
    TheRevocations().Await();
}

quillosdk::Task SignInTask() {
    return {quillocommon::Step::SignIn, "sign in"};
}

}  // namespace quilloauth
