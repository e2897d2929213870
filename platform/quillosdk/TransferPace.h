#pragma once

#include <chrono>
#include <cstdint>

namespace quillosdk {

/// Until when an exchange is waited for. Three things take their time, each with a rule of its own:
///
/// - The request's body goes out, as the other side acknowledges it: less than the slowest rate
/// over
///   the stall time is too slow. The patience is that of a stall, since what is cut is sent again.
/// - The service thinks: nothing need come for the stall time. Interim answers do not count.
/// - The answer comes: less than the slowest rate over 30 s is too slow. Without a slowest rate it
///   is enough that something comes within the stall time.
///
/// The time before a connection is there does not count, nor does that in which the reader wants no
/// more for now. One thread.
class TransferPace {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// The slowest rate is in bytes a second.
    TransferPace(std::chrono::seconds stall, std::uint64_t slowest);

    /// The request begins to go out, with a body of so many bytes.
    void Begin(Time now, std::uint64_t newBodyBytes);

    /// So many bytes of the body have been acknowledged since Begin.
    void Acknowledge(Time now, std::uint64_t bytes);

    /// So many more bytes of the answer have come.
    void Receive(Time now, std::uint64_t bytes);

    void Pause(Time now);
    void Resume(Time now);

    /// When the patience is at its end; the clock's last time when it has not begun.
    [[nodiscard]] Time Deadline() const;

    /// When to look again, and to call Acknowledge first while AwaitsAcknowledgement.
    [[nodiscard]] Time NextLook() const;
    [[nodiscard]] bool AwaitsAcknowledgement() const { return phase == Phase::Sending; }

private:
    enum class Phase { Connecting, Sending, Waiting, Receiving };

    void Enter(Phase newPhase, Time now);
    void Count(Time now, std::uint64_t total);
    [[nodiscard]] std::chrono::seconds Window() const;

    std::chrono::seconds stall;
    std::uint64_t slowest;

    Phase phase = Phase::Connecting;
    std::uint64_t bodyBytes = 0;
    std::uint64_t received = 0;
    Time lookedAt{};
    Time since{};             // the window's beginning
    std::uint64_t moved = 0;  // by then, in this phase
    bool isPaused = false;
    Time pausedAt{};
};

}  // namespace quillosdk
