#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>

#include "service/http/Pace.h"

namespace quilloservice::http {

/// What the table knows of one connection. The connection's thread writes it, the table reads it.
class TrackedSocket {
public:
    explicit TrackedSocket(int socket) : socket_(socket) {}

    /// The client is waited for, until `deadline` at the latest. A `stage` is what it is waited for
    /// with: a request, a body, that it takes an answer.
    void BeginStage(Time now);
    void BeginWait(Time deadline);
    void EndWait();
    /// Bytes have gone either way.
    void Count(std::int64_t bytes);

    /// Whether the server's end cuts the connection in the middle of an answer.
    void CutAtStop(bool cut) { cutAtStop_.store(cut, std::memory_order_relaxed); }

    /// Ends the connection, both ways or only what comes in, by shutting the socket down: who waits
    /// for it notices. Any thread.
    void ShutDown();
    void ShutDownInput();

    /// Before the socket is closed or given away.
    void Release();

private:
    friend class ConnectionTable;
    static constexpr std::int64_t kNotWaiting = INT64_MAX;

    /// Bytes in a second, of the stage; nothing else than waiting counts.
    [[nodiscard]] double Speed(Time now) const;

    std::mutex mutex_;
    int socket_;                                        // mutex_; -1 once released
    std::atomic<std::int64_t> deadline_ = kNotWaiting;  ///< steady clock's count
    std::atomic<std::int64_t> stageBegan_ = 0;          ///< ditto
    std::atomic<std::int64_t> stageBytes_ = 0;
    std::atomic<bool> cutAtStop_ = false;
    bool dropped_ = false;                                       // the table's mutex
    std::list<std::shared_ptr<TrackedSocket>>::iterator place_;  // the table's mutex
};

/// All open connections: how many there may be, and which is to go when there are too many or when
/// its time is up. Any thread.
class ConnectionTable {
public:
    explicit ConnectionTable(std::size_t most) : most_(most) {}

    /// Adds a connection. When there are too many, the slowest ones that are waited for go; when
    /// none is, the new one is refused: nullptr.
    std::shared_ptr<TrackedSocket> Add(int socket, Time now);
    void Remove(std::shared_ptr<TrackedSocket> const& tracked);

    /// Drops the connections whose clients were waited for for too long.
    void DropOverdue(Time now);

    /// Drops the slowest connections, a hundredth of all, but at least one. Returns how many.
    std::size_t DropSlowest(Time now);

    /// Ends what comes in on each connection, and the ones whose answers would take long.
    void Stop();

    [[nodiscard]] std::size_t size() const;

private:
    std::size_t DropSlowestLocked(Time now);
    void Drop(TrackedSocket& tracked);

    const std::size_t most_;
    mutable std::mutex mutex_;
    std::list<std::shared_ptr<TrackedSocket>> connections_;  // mutex_
    std::size_t dropped_ = 0;                                // mutex_; of them, on their way out
    bool stopping_ = false;                                  // mutex_
};

}  // namespace quilloservice::http
