#include "tests/support/ManualExecutor.h"

#include <map>
#include <mutex>
#include <thread>

namespace testsupport {

using moxcore::threads::TimePoint;

/// Shared with whoever has asked for the executor, and may so outlive the test.
class ManualExecutor::Schedule : public moxcore::threads::AsyncExecutor {
public:
    void CallAsync(std::function<void()> function) override {
        CallAsyncDelayed(std::move(function), 0);
    }

    void CallAsyncDelayed(std::function<void()> function, std::uint32_t delay) override {
        std::lock_guard lock(mutex);
        if (!closed) calls.emplace(now + std::chrono::milliseconds(delay), std::move(function));
    }

    TimePoint Now() const {
        std::lock_guard lock(mutex);
        return now;
    }

    TimePoint ReadClock() const {
        std::lock_guard lock(mutex);
        return now - clockIsBackBy;
    }

    void SetClockBackBy(std::chrono::microseconds time) {
        std::lock_guard lock(mutex);
        clockIsBackBy += time;
    }

    std::size_t RunUntil(TimePoint end) {
        std::size_t ran = 0;
        for (; auto const function = TakeDue(end); ++ran)
            function();
        return ran;
    }

    std::vector<std::chrono::milliseconds> Waiting() const {
        std::lock_guard lock(mutex);
        std::vector<std::chrono::milliseconds> delays;
        for (auto const& call : calls)
            delays.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(
                std::max(call.first - now, TimePoint::duration{0})));
        return delays;
    }

    void Close() {
        std::multimap<TimePoint, std::function<void()>> dropped;
        std::lock_guard lock(mutex);
        closed = true;
        dropped.swap(calls);
    }

private:
    /// The first function due by `end`, with the clock at its time; empty when there is none, with
    /// the clock at `end`.
    std::function<void()> TakeDue(TimePoint end) {
        std::lock_guard lock(mutex);
        if (calls.empty() || calls.begin()->first > end) {
            now = end;
            return nullptr;
        }
        auto const first = calls.extract(calls.begin());
        now = std::max(now, first.key());
        return std::move(first.mapped());
    }

    mutable std::mutex mutex;
    // Well past the clock's zero, which the product may take for "never".
    TimePoint now{std::chrono::hours(24 * 365 * 50)};       // guarded by mutex
    std::chrono::microseconds clockIsBackBy{0};             // guarded by mutex
    std::multimap<TimePoint, std::function<void()>> calls;  // guarded by mutex; by due time
    bool closed = false;                                    // guarded by mutex
};

ManualExecutor::ManualExecutor() : schedule(std::make_shared<Schedule>()) {
    moxcore::threads::SetIOBoundExecutor(schedule);
    moxcore::threads::SetClock([schedule = schedule] { return schedule->ReadClock(); });
}

ManualExecutor::~ManualExecutor() {
    moxcore::threads::SetIOBoundExecutor(nullptr);
    moxcore::threads::SetClock(nullptr);
    schedule->Close();
}

std::size_t ManualExecutor::RunDue() {
    return AdvanceBy(std::chrono::microseconds(0));
}

void ManualExecutor::SetClockBackBy(std::chrono::microseconds time) {
    schedule->SetClockBackBy(time);
}

void ManualExecutor::RunUntil(std::function<bool()> const& done) {
    while (!done()) {
        RunDue();
        std::this_thread::yield();
    }
}

std::size_t ManualExecutor::AdvanceBy(std::chrono::microseconds time) {
    return schedule->RunUntil(schedule->Now() + time);
}

std::vector<std::chrono::milliseconds> ManualExecutor::Waiting() const {
    return schedule->Waiting();
}

std::shared_ptr<moxcore::threads::AsyncExecutor> ManualExecutor::Executor() const {
    return schedule;
}

}  // namespace testsupport
