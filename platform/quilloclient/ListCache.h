#pragma once

#include <chrono>
#include <compare>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "moxcore/async/Future.h"
#include "moxcore/utility/Guid.h"
#include "quilloclient/CachedList.h"
#include "quillocommon/SerialExecutor.h"
#include "quillosdk/Answer.h"
#include "quillosdk/RetryPolicy.h"

namespace quillo {

/// The lists that have been asked for, and the line in which they are read: a few at a time, those
/// that somebody waits for first. When the service wants fewer requests, the line waits for as long
/// as it says. All of it, the handlers included, on the executor.
class ListCache : public std::enable_shared_from_this<ListCache> {
public:
    struct Key {
        ListKind kind;
        moxcore::utility::Guid parent;  ///< null: of the user
        friend auto operator<=>(Key const&, Key const&) = default;
    };

    struct Handlers {
        /// Asks the service once for what is at this path.
        std::function<quillosdk::Answer(std::string const& path)> fetch;
        /// A list that was handed out before is another one now.
        std::function<void(Key const&)> onChanged;
    };

    ListCache(std::shared_ptr<quillocommon::SerialExecutor> executor, Handlers handlers);

    /// Completes `promise` with the list once it is what the service has.
    template <class List>
    void Ask(Key const& key, std::shared_ptr<RefPromise<List>> const& promise) {
        Ask(key, [promise](CachedList& cached) { cached.Await(promise); });
    }

    /// The list may be another one: it is read again if it was asked for.
    void Invalidate(Key const& key);
    void InvalidateAll();

    /// Reads the `count` lists again that were read longest ago.
    void RefreshOldest(std::size_t count);

    /// Fails whatever is waited for.
    void FailAll(std::exception_ptr const& exception);

private:
    enum class State {
        Stale,     ///< may differ from the service's, and nothing is done about it
        Queued,    ///< in the line, or soon again
        Fetching,  ///< its request is under way
        Current
    };

    struct Entry {
        std::unique_ptr<CachedList> list;
        State state = State::Stale;
        bool outdated = false;       ///< while fetching: the answer may come too late to be current
        std::uint64_t lastRead = 0;  ///< a number that grows with each reading; 0: never
        std::optional<quillosdk::RetryPolicy> policy;  ///< of the reading that is to be done
    };

    void Ask(Key const& key, std::function<void(CachedList&)> const& await);
    void Queue(Key const& key, Entry& entry);
    void Line(Key const& key, State state);
    void Pump();
    [[nodiscard]] Entry* TakeNext(Key& key);
    [[nodiscard]] bool Repeat(Key const& key, Entry& entry, quillosdk::Answer const& answer);
    void OnAnswer(Key const& key, quillosdk::Answer const& answer);
    void OnContent(Key const& key, Entry& entry, quillosdk::HttpResponse& response);
    void OnFailure(Key const& key, Entry& entry, std::exception_ptr const& exception, int status);
    void Pause(std::chrono::milliseconds time);
    void Later(std::chrono::milliseconds delay, std::function<void(ListCache&)> const& work);

    std::shared_ptr<quillocommon::SerialExecutor> const executor;
    Handlers const handlers;

    // The executor's:
    std::map<Key, Entry> entries;
    std::deque<Key> awaited;  // the line: what somebody waits for
    std::deque<Key>
        unawaited;  // and what is only kept up to date; what is no longer queued is skipped
    std::size_t underWay = 0;
    bool paused = false;
    std::uint64_t readings = 0;
};

}  // namespace quillo
