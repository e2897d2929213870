#include "quillosdk/RetryLoop.h"

#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"

namespace quillosdk {
namespace {

class RetryLoop : public std::enable_shared_from_this<RetryLoop> {
public:
    RetryLoop(std::function<Answer()> send, std::shared_ptr<RetryPolicy> policy)
        : send(std::move(send)), policy(std::move(policy)) {}

    [[nodiscard]] Answer GetFuture() const { return promise.GetFuture(); }

    void Attempt() {
        send().OnComplete(
            [self = shared_from_this()](Answer const& answer) { self->OnAnswer(answer); });
    }

private:
    void OnAnswer(Answer const& answer) {
        auto const verdict = JudgeAnswer(answer);
        auto const delay = verdict.worthRepeating ? policy->NextDelay(verdict.retryAfter)
                                                  : std::optional<std::chrono::milliseconds>();
        if (delay) {
            policy->Unavailable(*delay);
            moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(
                [self = shared_from_this()] { self->Attempt(); },
                static_cast<std::uint32_t>(delay->count()));
        } else {
            policy->Answered();
            Forward(answer, promise);
        }
    }

    std::function<Answer()> const send;
    std::shared_ptr<RetryPolicy> const policy;
    AnswerPromise promise;
};

}  // namespace

Verdict JudgeAnswer(Answer const& answer) {
    if (auto const exception = answer.GetException())
        return {
            RetryPolicy::IsTransientResult(moxcore::config::ExtractResultFromException(exception)),
            {}};
    auto const response = answer.Get();
    if (!RetryPolicy::IsTransient(response->status)) return {};
    auto const header = response->headers.find("RETRY-AFTER");
    if (header == response->headers.end()) return {true, {}};
    return {true, RetryPolicy::ParseRetryAfter(header->second, moxcore::threads::Now())};
}

Answer SendWithRetries(std::function<Answer()> send, std::shared_ptr<RetryPolicy> policy) {
    auto const loop = std::make_shared<RetryLoop>(std::move(send), std::move(policy));
    auto answer = loop->GetFuture();
    loop->Attempt();
    return answer;
}

}  // namespace quillosdk
