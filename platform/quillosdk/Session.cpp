#include "quillosdk/Session.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "moxcore/threads/AsyncExecutor.h"
#include "moxcore/utility/NoDestructor.h"
#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "quillosdk/Redact.h"

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
    static moxcore::utility::NoDestructor<RejectedHandler> handler;
    return *handler;
}

void Redact(Answer const& answer, std::string const& token) {
    if (!answer.GetException()) RedactRefusal(*answer.Peek(), token);
}

}  // namespace

Session::Session(std::string const& clientID, TokenRefresher refresher)
    : userAgent("quillosdk (" + quillocommon::PercentEncode(clientID) + ")"),
      refresher(std::move(refresher)),
      identity(MakeIdentity({})) {}

quillocommon::Response Session::UpdateAccessToken(std::string const& newToken) {
    if (!IsToken(newToken)) return quillocommon::Response(kBadRequest);

    std::vector<std::shared_ptr<TokenPromise>> served;
    {
        std::lock_guard lock(mutex);
        identity = MakeIdentity(newToken);
        std::erase_if(waiters, [&](Waiter const& waiter) {
            if (waiter.rejected == newToken) return false;
            served.push_back(waiter.promise.lock());
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

std::shared_ptr<Session::Identity const> Session::MakeIdentity(std::string const& token) const {
    Identity made{token, {{"User-Agent", userAgent}}};
    if (!token.empty()) made.headers.emplace_back("Authorization", "Bearer " + token);
    return std::make_shared<Identity const>(std::move(made));
}

std::shared_ptr<Session::Identity const> Session::CurrentIdentity() {
    std::lock_guard lock(mutex);
    return identity;
}

void Session::Send(HttpRequest request, OnAnswer onAnswer) {
    auto const sentAs = CurrentIdentity();
    auto const sent = SendAs(sentAs, request);
    sent.OnComplete([self = shared_from_this(), sentAs, request = std::move(request),
                     onAnswer = std::move(onAnswer)](Answer const& answer) mutable {
        Redact(answer, sentAs->token);
        bool const rejected = !answer.GetException() && answer.Peek()->status == kUnauthorized;
        if (!rejected) return onAnswer(answer);
        self->AwaitOtherToken(sentAs->token)
            .OnComplete(
                [self, answer, request = std::move(request), onAnswer = std::move(onAnswer)](
                    moxcore::async::Future<std::string> const& other) mutable {
                    if (other.GetException()) return onAnswer(answer);
                    auto const identity = self->MakeIdentity(other.Peek());
                    SendAs(identity, request)
                        .OnComplete([identity,
                                     onAnswer = std::move(onAnswer)](Answer const& second) mutable {
                            Redact(second, identity->token);
                            onAnswer(second);
                        });
                });
    });
}

Answer Session::Send(HttpRequest request) {
    AnswerPromise promise;
    auto future = promise.GetFuture();
    Send(std::move(request), [promise = std::move(promise)](Answer const& answer) mutable {
        Forward(answer, promise);
    });
    return future;
}

Answer Session::SendWithRetries(HttpRequest const& request, std::shared_ptr<RetryPolicy> policy) {
    return quillosdk::SendWithRetries(
        [self = shared_from_this(), request] { return self->Send(request); }, std::move(policy));
}

Answer Session::SendAs(std::shared_ptr<Identity const> const& identity,
                       HttpRequest const& request) {
    auto url = quillocommon::UrlAtService(request.url);
    if (url.empty())
        return Answer::CreateFailed(kBadRequest, quillocommon::WhyNoServiceAddress(), nullptr);
    HttpRequest sent = request;
    sent.url = std::move(url);
    sent.commonHeaders = {identity, &identity->headers};
    return Transport::Get()->Send(std::move(sent));
}

moxcore::async::Future<std::string> Session::AwaitOtherToken(std::string const& rejected) {
    auto const waiter = std::make_shared<TokenPromise>();
    auto other = waiter->GetFuture();
    bool alreadyAsked = false;
    {
        std::lock_guard lock(mutex);
        if (identity->token != rejected) {
            waiter->SetValue(identity->token);
            return other;
        }
        alreadyAsked = std::any_of(waiters.begin(), waiters.end(), [&](Waiter const& each) {
            return each.rejected == rejected && !each.promise.expired();
        });
        waiters.push_back({waiter, rejected});
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
        auto const erased = std::erase_if(
            waiters, [&](Waiter const& each) { return each.promise.lock() == waiter; });
        if (erased == 0) return;  // it has been served
    }
    waiter->Cancel();
}

std::optional<bool> Session::OffersJoining() {
    auto const address = quillocommon::GetServiceAddress();
    std::lock_guard lock(mutex);
    return address == offersAddress ? std::optional(offersJoining) : std::nullopt;
}

void Session::NoteOffersJoining(bool offers) {
    auto const address = quillocommon::GetServiceAddress();
    std::lock_guard lock(mutex);
    offersAddress = address;
    offersJoining = offers;
}

}  // namespace quillosdk
