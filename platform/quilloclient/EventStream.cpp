#include "quilloclient/EventStream.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillosdk/RetryLoop.h"

namespace quillo {
namespace {

using std::chrono::milliseconds;

/// The service says something every 15 s.
constexpr std::chrono::seconds kStallTimeout{45};

/// A connection that lasts for so long counts as good: the waits begin anew after it.
constexpr std::chrono::seconds kGoodAfter{10};

/// How long to wait for a service that does not tell of changes to do so after all.
constexpr milliseconds kUnavailablePause{60'000};

constexpr milliseconds kShortestPause{100};

constexpr std::size_t kLongestRefusal = std::size_t{64} * 1024;

constexpr quillosdk::RetryLimits kNeverGiveUp{std::numeric_limits<int>::max(),
                                              std::chrono::hours(24 * 365 * 100)};

}  // namespace

EventStream::EventStream(std::shared_ptr<quillocommon::SerialExecutor> executor,
                         std::shared_ptr<quillosdk::Session> session, Handlers handlers)
    : executor(std::move(executor)),
      session(std::move(session)),
      handlers(std::move(handlers)),
      policy(kNeverGiveUp) {}

EventStream::~EventStream() {
    if (pipe) pipe->Close();
}

void EventStream::Connect() {
    parser.emplace([this](Event const& event) { TakeEvent(event); });
    auto const post = [executor = executor, weak = weak_from_this()](auto work) {
        executor->CallAsync([weak, work = std::move(work)] {
            if (auto const self = weak.lock()) work(*self);
        });
    };
    pipe = std::make_shared<quillosdk::BodyPipe>([post, connection = ++connections] {
        post([connection](EventStream& self) { self.Take(connection); });
    });
    quillosdk::HttpRequest request{.method = "GET", .url = "/v1/events"};
    request.headers.emplace_back("Accept", "text/event-stream");
    if (!lastEventID.empty()) request.headers.emplace_back("Last-Event-ID", lastEventID);
    request.stallTimeout = kStallTimeout;
    request.slowestRate = 0;  // there may be nothing to tell
    request.maxAnswerBytes = kLongestRefusal;
    request.answerPipe = pipe;
    static_cast<void>(
        session->Send(std::move(request)).Then([post](quillosdk::Answer const& answer) {
            post([answer](EventStream& self) { self.End(answer); });
        }));
}

void EventStream::Take(unsigned connection) {
    if (!pipe || connection != connections) return;
    try {
        parser->Feed(pipe->Take());
    } catch (moxcore::config::ResultException const&) {
        pipe->Close();
    }
    handlers.onCaughtUp();
}

void EventStream::TakeEvent(Event const& event) {
    if (!event.id.empty()) lastEventID = event.id;
    if (!std::exchange(isLive, true)) {
        liveSince = moxcore::threads::Now();
        handlers.onLive(true);
    }
    handlers.onEvent(event);
}

void EventStream::End(quillosdk::Answer const& answer) {
    pipe = nullptr;
    bool const wasLive = std::exchange(isLive, false);
    if (wasLive && moxcore::threads::Now() - liveSince >= kGoodAfter) policy.Progressed();
    auto const delay = NextDelay(answer);
    executor->CallAsyncDelayed(
        [weak = weak_from_this()] {
            if (auto const self = weak.lock()) self->Connect();
        },
        static_cast<std::uint32_t>(delay.count()));
    if (wasLive) handlers.onLive(false);
}

milliseconds EventStream::NextDelay(quillosdk::Answer const& answer) {
    auto const verdict = quillosdk::JudgeAnswer(answer);
    bool const hasEnded = answer.GetException() != nullptr ||
                          (answer.Get()->status >= 200 && answer.Get()->status <= 299);
    if (!verdict.worthRepeating && !hasEnded) return kUnavailablePause;
    return std::max(policy.NextDelay(verdict.retryAfter).value_or(kUnavailablePause),
                    kShortestPause);
}

}  // namespace quillo
