#include "quilloclient/ListCache.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "moxcore/config/Error.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/RetryLoop.h"

namespace quillo {
namespace {

using std::chrono::milliseconds;

/// Enough to fill an opened tree quickly, and to leave connections for uploads.
constexpr std::size_t kMostUnderWay = 8;

constexpr int kTooManyRequests = 429;
constexpr milliseconds kPauseUnlessTold{1'000};
constexpr milliseconds kShortestPause{100};

/// When a list that could not be read, and that somebody has, is tried again.
constexpr milliseconds kTryAgainAfter{30'000};

/// Whether the service has said that there is no such list for this user.
bool IsGone(int status) {
    return status == 403 || status == 404 || status == 410;
}

}  // namespace

ListCache::ListCache(std::shared_ptr<quillocommon::SerialExecutor> executor, Handlers handlers)
    : executor(std::move(executor)), handlers(std::move(handlers)) {}

void ListCache::Ask(Key const& key, std::function<void(CachedList&)> const& await) {
    auto& entry = entries[key];
    if (!entry.list) entry.list = CachedList::Create(key.kind);
    await(*entry.list);
    if (entry.state == State::Current) return entry.list->Serve();
    if (entry.state == State::Queued) awaited.push_back(key);
    if (entry.state == State::Stale) Queue(key, entry);
    Pump();
}

void ListCache::Invalidate(Key const& key) {
    auto const found = entries.find(key);
    if (found == entries.end()) return;
    auto& entry = found->second;
    if (entry.state == State::Fetching) entry.outdated = true;
    if (entry.state == State::Current || entry.state == State::Stale) Queue(key, entry);
    Pump();
}

void ListCache::InvalidateAll() {
    std::vector<Key> keys;
    for (auto const& each : entries)
        keys.push_back(each.first);
    for (auto const& key : keys)
        Invalidate(key);
}

void ListCache::RefreshOldest(std::size_t count) {
    std::vector<std::pair<std::uint64_t, Key>> current;
    for (auto const& [key, entry] : entries)
        if (entry.state == State::Current) current.emplace_back(entry.lastRead, key);
    auto const end = current.begin() + static_cast<std::ptrdiff_t>(std::min(count, current.size()));
    std::partial_sort(current.begin(), end, current.end());
    for (auto each = current.begin(); each != end; ++each)
        Invalidate(each->second);
}

void ListCache::FailAll(std::exception_ptr const& exception) {
    for (auto const& each : std::exchange(entries, {}))
        each.second.list->Fail(exception);
}

void ListCache::Queue(Key const& key, Entry& entry) {
    entry.state = State::Queued;
    entry.policy.emplace();
    (entry.list->IsAwaited() ? awaited : unawaited).push_back(key);
}

/// Puts the list into the line if its state still is the one given.
void ListCache::Line(Key const& key, State state) {
    auto const found = entries.find(key);
    if (found == entries.end() || found->second.state != state) return;
    if (state == State::Stale)
        Queue(key, found->second);
    else
        (found->second.list->IsAwaited() ? awaited : unawaited).push_back(key);
    Pump();
}

void ListCache::Pump() {
    Key key;
    while (!paused && underWay < kMostUnderWay) {
        auto* const entry = TakeNext(key);
        if (!entry) return;
        entry->state = State::Fetching;
        entry->outdated = false;
        ++underWay;
        static_cast<void>(handlers.fetch(PathOf(key.kind, key.parent))
                              .Then([executor = executor, weak = weak_from_this(),
                                     key](quillosdk::Answer const& answer) {
                                  executor->CallAsync([weak, key, answer] {
                                      if (auto const self = weak.lock())
                                          self->OnAnswer(key, answer);
                                  });
                              }));
    }
}

ListCache::Entry* ListCache::TakeNext(Key& key) {
    for (auto* const line : {&awaited, &unawaited}) {
        while (!line->empty()) {
            key = line->front();
            line->pop_front();
            auto const found = entries.find(key);
            if (found != entries.end() && found->second.state == State::Queued)
                return &found->second;
        }
    }
    return nullptr;
}

void ListCache::OnAnswer(Key const& key, quillosdk::Answer const& answer) {
    --underWay;
    auto& entry = entries.at(key);  // stays while it is being fetched
    if (!Repeat(key, entry, answer)) {
        if (auto const exception = answer.GetException())
            OnFailure(key, entry, exception, 0);
        else
            OnContent(key, entry, *answer.Get());
    }
    Pump();
}

/// Whether the list is asked for again because of this answer.
bool ListCache::Repeat(Key const& key, Entry& entry, quillosdk::Answer const& answer) {
    auto const verdict = quillosdk::JudgeAnswer(answer);
    if (!verdict.worthRepeating) return false;
    if (!answer.GetException() && answer.Get()->status == kTooManyRequests) {
        (entry.list->IsAwaited() ? awaited : unawaited).push_front(key);
        Pause(verdict.retryAfter.value_or(kPauseUnlessTold));
    } else {
        auto const delay = entry.policy->NextDelay(verdict.retryAfter);
        if (!delay) return false;
        Later(*delay, [key](ListCache& self) { self.Line(key, State::Queued); });
    }
    entry.state = State::Queued;
    return true;
}

void ListCache::OnContent(Key const& key, Entry& entry, quillosdk::HttpResponse& response) {
    bool const isFirst = entry.lastRead == 0;
    bool isOther = false;
    try {
        if (response.status < 200 || response.status > 299)
            throw moxcore::config::ResultException(
                quillosdk::kRefused, quillosdk::DescribeRefusal(TaskOf(key.kind), response));
        isOther = entry.list->Take(response.body);
    } catch (moxcore::config::ResultException const&) {
        return OnFailure(key, entry, std::current_exception(), response.status);
    }
    entry.lastRead = ++readings;
    entry.state = State::Current;
    entry.list->Serve();
    if (entry.outdated) Queue(key, entry);
    if (isOther && !isFirst) handlers.onChanged(key);
}

void ListCache::OnFailure(Key const& key, Entry& entry, std::exception_ptr const& exception,
                          int status) {
    if (entry.list->IsAwaited()) quillosdk::ReportException(TaskOf(key.kind), exception, status);
    bool const isWanted = entry.lastRead != 0 && !IsGone(status);
    if (isWanted) {
        entry.state = State::Stale;
        Later(kTryAgainAfter, [key](ListCache& self) { self.Line(key, State::Stale); });
        return entry.list->Fail(exception);
    }
    auto const list = std::move(entry.list);  // outlives the entry
    entries.erase(key);
    list->Fail(exception);
}

void ListCache::Pause(milliseconds time) {
    paused = true;
    Later(std::max(time, kShortestPause), [](ListCache& self) {
        self.paused = false;
        self.Pump();
    });
}

void ListCache::Later(milliseconds delay, std::function<void(ListCache&)> const& work) {
    executor->CallAsyncDelayed(
        [weak = weak_from_this(), work] {
            if (auto const self = weak.lock()) work(*self);
        },
        static_cast<std::uint32_t>(delay.count()));
}

}  // namespace quillo
