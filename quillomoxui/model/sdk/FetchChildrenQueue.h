#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "moxcore/async/Future.h"
#include "moxcore/threads/AsyncExecutor.h"
#include "moxcore/threads/Clock.h"
#include "moxcore/utility/EnableSharedAs.h"
#include "moxcore/utility/UniqueFunction.h"
#include "quillocommon/Guid.h"
#include "quillomoxui/model/QuilloNode.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillosdk/QuilloResponse.h"

namespace quillomoxui::model {

/// Sends the child requests of one kind no faster than the service allows, and hands each answer to
/// the node that asked, if it still exists. At most `limit` requests are under way or were sent
/// within the last `window`; the service's answers announce both. A request that the service
/// refuses with 429 goes to the front and is sent again; one that fails otherwise reports nothing
/// and frees its place after one window.
///
/// A queue lives as long as some adapter of its kind holds it; answers that come later are dropped.
/// Any thread; callbacks come on the service's own threads, under no lock.
template <class Request, class Response, class ChildVector>
class QuilloCppSdkIntegration::FetchChildrenQueue
    : public virtual moxcore::utility::EnableSharedAs {
public:
    using Callback = std::function<void(ChildVector const&)>;
    using Answer = moxcore::async::Future<std::shared_ptr<Response>>;
    using Continuation = moxcore::utility::UniqueFunction<void(Answer const&)>;

    ~FetchChildrenQueue() override = default;

    /// Sends one request through the shared client and attaches `continuation` to its answer.
    virtual moxcore::async::Future<void> RequestChildren(quillocommon::Guid const& parentID,
                                                         Continuation continuation) const = 0;

    [[nodiscard]] virtual ChildVector const& GetChildrenList(
        std::shared_ptr<Response> const& response) const = 0;

    /// Queues a request for the children of `node`, which the queue does not keep alive. `callback`
    /// receives them.
    void Push(std::shared_ptr<QuilloNode> const& node, Callback callback);

    /// The pacing step: gives up what was never answered, forgets what has left the window, and
    /// sends what there is room for.
    void FetchMany();

    /// Retires the first request under way for `node` (null: for a node that is gone).
    void Pop(std::shared_ptr<QuilloNode> const& node);

    /// Retires the request as Pop does and queues it anew, before all others.
    void Retry(std::shared_ptr<QuilloNode> const& node, Callback callback);

    /// Has what is queued for `nodes` sent before all else that is queued now, in this order: the
    /// user looks at them. Only what the service has refused stays before them. Nodes for which
    /// nothing is queued do not matter.
    void Prefer(NodeVector<QuilloNode> const& nodes);

    /// Takes over the limit and the window that the answer announces, if it does. Throws what
    /// std::stoi throws when they are no numbers.
    void SetRateLimit(std::shared_ptr<quillosdk::QuilloResponse> const& response);

protected:
    FetchChildrenQueue(std::int64_t initialLimit, std::chrono::seconds initialWindow);

private:
    /// Shared by the list that it is in and by the continuation of its answer.
    struct RequestData {
        std::weak_ptr<QuilloNode> const node;
        Callback const callback;
        bool const isRefused;                  ///< with 429, and queued anew
        moxcore::threads::TimePoint sentTime;  ///< guarded by the queue's mutex; once under way
    };
    using RequestPointer = std::shared_ptr<RequestData>;

    [[nodiscard]] moxcore::async::Future<void> FetchOne(RequestPointer const& request);
    void HandleAnswer(RequestData const& request, Answer const& answer);
    void RunScheduled(std::uint64_t run);

    // With the mutex held:
    void Start(std::chrono::seconds delay);
    void Retire(std::shared_ptr<QuilloNode> const& node);
    void CatchUpWithClock(moxcore::threads::TimePoint now);
    void RetireStale(moxcore::threads::TimePoint now);
    void ForgetExpired(moxcore::threads::TimePoint now);
    [[nodiscard]] std::vector<RequestPointer> TakeSendable();

    std::shared_ptr<moxcore::threads::AsyncExecutor> const executor;

    std::mutex mutex;  // guards all below
    std::optional<moxcore::threads::TimePoint>
        scheduledFor;  // the one run that is to come; the clock's least time: as soon as can be
    std::uint64_t scheduledRun = 0;       // its number; others find themselves out of date
    std::deque<RequestPointer> pending;   // what was refused comes first
    std::deque<RequestPointer> inFlight;  // in sending order
    std::multiset<moxcore::threads::TimePoint> recentLog;  // sent times of what was retired
    std::int64_t limit;
    std::chrono::seconds window;
};

}  // namespace quillomoxui::model
