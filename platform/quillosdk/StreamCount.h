#pragma once

#include <chrono>
#include <cstdint>

#include "moxcore/threads/Clock.h"

namespace quillosdk {

/// How many streams of one upload send at a time: as many as bring more. It begins with one, and
/// doubles that for as long as a quarter more arrives with twice as many; when it does not, it goes
/// back, and tries again after a while, since the line may have changed. Besides, a piece may
/// always begin when all that was begun is on its way and only answers are waited for: on a long
/// line nothing would be sent meanwhile. A plain value.
class StreamCount {
public:
    using Time = moxcore::threads::TimePoint;

    /// `most` streams at any time.
    explicit StreamCount(int most) : most(most) {}

    /// Whether another piece may begin while `busy` pieces are under way, `sending` of them with
    /// bytes that have not been sent yet.
    [[nodiscard]] bool MayBegin(int busy, int sending) const {
        return busy < most && (sending == 0 || busy < count);
    }

    /// Bytes that all streams have sent together, since the upload began; what was lost on the way
    /// does not count back.
    void OnSent(Time now, std::uint64_t bytes);

    /// How many may send at the same time for now.
    [[nodiscard]] int Count() const { return count; }

private:
    enum class Phase { Settling, Measuring, Content };

    void Enter(Phase newPhase, Time now, std::uint64_t bytes);
    void Judge(Time now, std::uint64_t bytes);

    int most;
    int count = 1;
    int former = 0;         // the count whose rate is known; 0: none
    double formerRate = 0;  // in bytes a second
    bool hasBegun = false;
    Phase phase = Phase::Settling;
    Time since{};
    std::uint64_t bytesSince = 0;
};

}  // namespace quillosdk
