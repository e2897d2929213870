#include "quillosdk/Session.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "moxcore/threads/AsyncExecutor.h"
#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"

namespace quillosdk {
namespace {

constexpr std::uint32_t kTokenPatienceMilliseconds = 10'000;

constexpr int kUnauthorized = 401;

class RejectedHandler {
public:
    void Set(std::function<void(std::string const&)> newHandler) {
        std::lock_guard lock(mutex);
        handler = std::move(newHandler);
    }

    void Tell(std::string const& token) {
        std::unique_lock lock(mutex);
        auto const current = handler;
        lock.unlock();
        if (current) current(token);
    }

private:
    std::mutex mutex;
    std::function<void(std::string const&)> handler;  // guarded by mutex
};

/// Never destroyed: answers may still come while the process ends.
RejectedHandler& TheRejectedHandler() {
    static RejectedHandler& handler = *new RejectedHandler;
    return handler;
}

/// Takes `token` out of an error's text: a service that repeats what it was sent must not carry it
/// into what is shown and traced.
void Redact(std::string& text, std::string const& token) {
    if (token.empty()) return;
    for (auto at = text.find(token); at != std::string::npos; at = text.find(token, at))
        text.replace(at, token.size(), "...");
}

}  // namespace

Session::Session(std::string const& clientID, TokenRefresher refresher)
    : userAgent("quillosdk (" + quillocommon::PercentEncode(clientID) + ")"),
      refresher(std::move(refresher)) {}

quillocommon::Response Session::UpdateAccessToken(std::string const& newToken) {
    bool const usable =
        !newToken.empty() &&
        std::all_of(newToken.begin(), newToken.end(), [](char c) { return c > ' ' && c < 0x7F; });
    if (!usable) return quillocommon::Response(kBadRequest);

    std::vector<std::shared_ptr<TokenPromise>> served;
    {
        std::lock_guard lock(mutex);
        token = newToken;
        std::erase_if(waiters, [&](auto const& entry) {
            auto const& [waiter, rejected] = entry;
            if (rejected == newToken) return false;
            served.push_back(waiter.lock());
            return true;
        });
    }
    for (auto const& waiter : served) {
        if (waiter) waiter->SetValue(newToken);
    }
    return {};
}

void Session::SetTokenRejectedHandler(std::function<void(std::string const& token)> handler) {
    TheRejectedHandler().Set(std::move(handler));
}

Answer Session::Send(HttpRequest request) {
    std::string sentToken;
    {
        std::lock_guard lock(mutex);
        sentToken = token;
    }
    auto const promise = std::make_shared<AnswerPromise>();
    auto const deliver = [promise](Answer const& answer) { Forward(answer, *promise); };
    auto sent = SendWithToken(request, sentToken);
    auto onFirst = [self = shared_from_this(), deliver, sentToken,
                    request = std::move(request)](Answer const& answer) {
        if (answer.GetException() || answer.Get()->status != kUnauthorized) return deliver(answer);
        auto onToken = [self, deliver, answer,
                        request](moxcore::async::Future<std::string> const& other) {
            if (other.GetException()) return deliver(answer);
            static_cast<void>(self->SendWithToken(request, other.Get()).Then(deliver));
        };
        static_cast<void>(self->AwaitOtherToken(sentToken).Then(std::move(onToken)));
    };
    static_cast<void>(sent.Then(std::move(onFirst)));
    return promise->GetFuture();
}

Answer Session::SendWithRetries(HttpRequest const& request, std::shared_ptr<RetryPolicy> policy) {
    return quillosdk::SendWithRetries(
        [self = shared_from_this(), request] { return self->Send(request); }, std::move(policy));
}

Answer Session::SendWithToken(HttpRequest request, std::string const& sentToken) {
    auto const address = quillocommon::GetServiceAddress();
    if (address.empty())
        return Answer::CreateFailed(kBadRequest, "no service address is set (QUILLO_SERVICE_URL)",
                                    nullptr);
    request.url.insert(0, address);
    request.headers.emplace_back("User-Agent", userAgent);
    if (!sentToken.empty()) request.headers.emplace_back("Authorization", "Bearer " + sentToken);
    return Transport::Get()->Send(std::move(request)).Then([sentToken](Answer const& answer) {
        auto response = answer.Get();
        if (response->status >= 400) Redact(response->body, sentToken);
        return response;
    });
}

moxcore::async::Future<std::string> Session::AwaitOtherToken(std::string const& rejected) {
    auto const waiter = std::make_shared<TokenPromise>();
    auto other = waiter->GetFuture();
    bool alreadyAsked = false;
    {
        std::lock_guard lock(mutex);
        if (token != rejected) {
            waiter->SetValue(token);
            return other;
        }
        alreadyAsked = std::any_of(waiters.begin(), waiters.end(), [&](auto const& entry) {
            return entry.second == rejected && !entry.first.expired();
        });
        waiters.emplace(waiter, rejected);
    }
    moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(
        [self = shared_from_this(), waiter] { self->StopWaiting(waiter); },
        kTokenPatienceMilliseconds);
    if (!alreadyAsked) {
        TheRejectedHandler().Tell(rejected);
        if (refresher) refresher(rejected);
    }
    return other;
}

void Session::StopWaiting(std::shared_ptr<TokenPromise> const& waiter) {
    {
        std::lock_guard lock(mutex);
        if (waiters.erase(waiter) == 0) return;  // it has been served
    }
    waiter->Cancel();
}

}  // namespace quillosdk
