#include "quillomoxui/model/sdk/FetchChildrenQueue.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>

#include "moxcore/config/Error.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/sdk/ChildQueues.h"
#include "quillomoxui/model/sdk/GuidConversions.h"
#include "quillomoxui/model/sdk/RateLimit.h"

namespace quillomoxui::model {

namespace {

constexpr auto kExpiredFolderPointer = static_cast<moxcore::config::Result>(0xA00F000D);
constexpr int kTooManyRequests = 429;
constexpr std::chrono::seconds kWakeUpInterval{5};

}  // namespace

#define QUEUE_TEMPLATE template <class Request, class Response, class ChildVector>
#define QUEUE QuilloCppSdkIntegration::FetchChildrenQueue<Request, Response, ChildVector>

QUEUE_TEMPLATE
QUEUE::FetchChildrenQueue(std::int64_t initialLimit, std::chrono::seconds initialWindow)
    : executor(moxcore::threads::GetIOBoundExecutor()),
      limit(initialLimit),
      window(initialWindow) {}

QUEUE_TEMPLATE
void QUEUE::Push(std::shared_ptr<QuilloNode> const& node, Callback callback) {
    auto request = std::make_shared<RequestData>(RequestData{node, std::move(callback), false, {}});
    std::lock_guard lock(mutex);
    pending.push_back(std::move(request));
    Start(std::chrono::seconds(0));
}

QUEUE_TEMPLATE
void QUEUE::Start(std::chrono::seconds delay) {
    using moxcore::threads::TimePoint;
    // Each answer asks for a run at once, and the clock is not asked for that.
    auto const due = delay.count() == 0 ? TimePoint::min() : moxcore::threads::Now() + delay;
    if (scheduledFor && *scheduledFor <= due) return;
    scheduledFor = due;
    executor->CallAsyncDelayed(
        [weak = std::weak_ptr(Share(this)), run = ++scheduledRun] {
            if (auto const queue = weak.lock()) queue->RunScheduled(run);
        },
        static_cast<std::uint32_t>(std::chrono::milliseconds(delay).count()));
}

QUEUE_TEMPLATE
void QUEUE::RunScheduled(std::uint64_t run) {
    {
        std::lock_guard lock(mutex);
        if (run != scheduledRun) return;  // an earlier run has been put in its place
    }
    FetchMany();
}

QUEUE_TEMPLATE
void QUEUE::FetchMany() {
    std::vector<RequestPointer> sendable;
    {
        std::lock_guard lock(mutex);
        auto const now = moxcore::threads::Now();
        CatchUpWithClock(now);
        RetireStale(now);
        ForgetExpired(now);
        sendable = TakeSendable();
        scheduledFor.reset();
        if (!pending.empty() || !inFlight.empty() || !recentLog.empty()) Start(kWakeUpInterval);
    }
    // Sent after the lock is released: an answer may come inside the call, and looks for its entry
    // then. What could not be sent keeps its place until the stale sweep.
    for (auto const& request : sendable)
        static_cast<void>(FetchOne(request));
}

QUEUE_TEMPLATE
void QUEUE::CatchUpWithClock(moxcore::threads::TimePoint now) {
    // A clock that was set back must not have anything wait until it is as late again: what seems
    // to be sent later than now was sent by now, and leaves one window from here.
    for (auto const& request : inFlight)
        request->sentTime = std::min(request->sentTime, now);
    auto const later = recentLog.upper_bound(now);
    auto const count = std::distance(later, recentLog.end());
    recentLog.erase(later, recentLog.end());
    for (auto i = count; i > 0; --i)
        recentLog.insert(recentLog.end(), now);
}

QUEUE_TEMPLATE
void QUEUE::RetireStale(moxcore::threads::TimePoint now) {
    std::erase_if(inFlight, [&](RequestPointer const& request) {
        bool const isStale = now - request->sentTime > window;
        if (isStale) recentLog.insert(request->sentTime);
        return isStale;
    });
}

QUEUE_TEMPLATE
void QUEUE::ForgetExpired(moxcore::threads::TimePoint now) {
    recentLog.erase(recentLog.begin(), recentLog.lower_bound(now - window));
}

QUEUE_TEMPLATE
auto QUEUE::TakeSendable() -> std::vector<RequestPointer> {
    std::vector<RequestPointer> sendable;
    while (!pending.empty() &&
           static_cast<std::int64_t>(recentLog.size() + inFlight.size()) < limit) {
        auto const& request = sendable.emplace_back(std::move(pending.front()));
        pending.pop_front();
        request->sentTime = moxcore::threads::Now();
        inFlight.push_back(request);
    }
    return sendable;
}

QUEUE_TEMPLATE
moxcore::async::Future<void> QUEUE::FetchOne(RequestPointer const& request) {
    auto const node = request->node.lock();
    if (!node)
        return moxcore::async::Future<void>::CreateFailed(kExpiredFolderPointer,
                                                          "expired folder pointer", nullptr);
    return RequestChildren(ToServiceGuid(node->GetID()),
                           [weak = std::weak_ptr(Share(this)), request](Answer const& answer) {
                               if (auto const queue = weak.lock())
                                   queue->HandleAnswer(*request, answer);
                           });
}

QUEUE_TEMPLATE
void QUEUE::HandleAnswer(RequestData const& request, Answer const& answer) {
    if (moxcore::config::ExtractResultFromException(answer.GetException()) < 0) return;
    auto const& response = answer.Peek();
    try {
        SetRateLimit(response);
    } catch (std::exception const&) {
        quillocommon::ReportFailure({quillocommon::Step::ReadLocations,
                                     moxcore::config::kUnknownFailure,
                                     response->GetHTTPStatusCode(),
                                     "The list of a location was dropped: the service announced a "
                                     "rate limit that is no number."});
        throw;
    }
    if (response->IsSuccessful()) {
        request.callback(GetChildrenList(response));
        Pop(request.node.lock());
    } else if (response->GetHTTPStatusCode() == kTooManyRequests) {
        Retry(request.node.lock(), request.callback);
    }
}

QUEUE_TEMPLATE
void QUEUE::Pop(std::shared_ptr<QuilloNode> const& node) {
    std::lock_guard lock(mutex);
    Retire(node);
    Start(std::chrono::seconds(0));
}

QUEUE_TEMPLATE
void QUEUE::Retry(std::shared_ptr<QuilloNode> const& node, Callback callback) {
    auto request = std::make_shared<RequestData>(RequestData{node, std::move(callback), true, {}});
    std::lock_guard lock(mutex);
    Retire(node);
    pending.push_front(std::move(request));
    Start(std::chrono::seconds(0));
}

QUEUE_TEMPLATE
void QUEUE::Prefer(NodeVector<QuilloNode> const& nodes) {
    std::map<std::weak_ptr<QuilloNode>, std::size_t, std::owner_less<>> ranks;
    for (auto const& node : nodes)
        ranks.emplace(node, ranks.size());
    auto const rankOf = [&](RequestPointer const& request) {
        auto const found = ranks.find(request->node);
        return found == ranks.end() ? ranks.size() : found->second;
    };
    std::lock_guard lock(mutex);
    auto const first =
        std::find_if(pending.begin(), pending.end(),
                     [](RequestPointer const& request) { return !request->isRefused; });
    auto const others = std::stable_partition(
        first, pending.end(),
        [&](RequestPointer const& request) { return rankOf(request) < ranks.size(); });
    std::stable_sort(first, others,
                     [&](auto const& a, auto const& b) { return rankOf(a) < rankOf(b); });
}

QUEUE_TEMPLATE
void QUEUE::Retire(std::shared_ptr<QuilloNode> const& node) {
    auto const found =
        std::find_if(inFlight.begin(), inFlight.end(), [&](RequestPointer const& request) {
            return node ? !request->node.owner_before(node) && !node.owner_before(request->node)
                        : request->node.expired();
        });
    if (found == inFlight.end()) return;
    recentLog.insert((*found)->sentTime);
    inFlight.erase(found);
}

QUEUE_TEMPLATE
void QUEUE::SetRateLimit(std::shared_ptr<quillosdk::QuilloResponse> const& response) {
    auto const announced = ReadRateLimit(response->GetHeader());
    if (!announced) return;

    std::lock_guard lock(mutex);
    limit = announced->limit;
    window = announced->window;
}

template class QuilloCppSdkIntegration::FetchChildrenQueue<
    quillosdk::GetWorkspacesByAccountRequest, quillosdk::GetWorkspacesByAccountResponse,
    std::vector<quillosdk::Workspace>>;
template class QuilloCppSdkIntegration::FetchChildrenQueue<
    quillosdk::GetProjectsByWorkspaceRequest, quillosdk::GetProjectsByWorkspaceResponse,
    std::vector<quillosdk::Project>>;
template class QuilloCppSdkIntegration::FetchChildrenQueue<quillosdk::GetChildAssetsRequest,
                                                           quillosdk::GetChildAssetsResponse,
                                                           std::vector<quillosdk::Asset>>;

}  // namespace quillomoxui::model
