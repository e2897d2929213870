#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "moxcore/threads/AsyncExecutor.h"
#include "moxcore/threads/Clock.h"

namespace testsupport {

/// Stands in for the I/O executor and the system clock as long as it lives: the test says when time
/// passes and runs what has become due, on its own thread. Functions may be given to the executor
/// on any thread; the rest is the test's thread's. What has not run by the end is dropped.
class ManualExecutor {
public:
    ManualExecutor();
    ~ManualExecutor();
    ManualExecutor(ManualExecutor const&) = delete;
    ManualExecutor& operator=(ManualExecutor const&) = delete;

    /// Runs what is due now, also what these functions make due in turn; returns how many ran.
    std::size_t RunDue();

    /// Lets `time` pass: runs each function that becomes due, in order, with the clock at the time
    /// for which it was asked; returns how many ran.
    std::size_t AdvanceBy(std::chrono::microseconds time);

    /// Sets the system clock back, as a user can; what waits is due when it would have been.
    void SetClockBackBy(std::chrono::microseconds time);

    /// Runs what is due until `done`; what other threads do comes meanwhile.
    void RunUntil(std::function<bool()> const& done);

    /// For each function that waits, how long it still has to, soonest first.
    [[nodiscard]] std::vector<std::chrono::milliseconds> Waiting() const;

    /// What GetIOBoundExecutor answers meanwhile.
    [[nodiscard]] std::shared_ptr<moxcore::threads::AsyncExecutor> Executor() const;

private:
    class Schedule;
    std::shared_ptr<Schedule> schedule;
};

}  // namespace testsupport
