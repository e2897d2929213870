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
    explicit TrackedSocket(int socket) : socket(socket) {}

    /// The client is waited for, until `until` at the latest. A `stage` is what it is waited for
    /// with: a request, a body, that it takes an answer.
    void BeginStage(Time now);
    void BeginWait(Time until);
    void EndWait();
    /// Bytes have gone either way.
    void Count(std::int64_t bytes);

    /// Whether the server's end cuts the connection in the middle of an answer.
    void CutAtStop(bool cut) { cutAtStop.store(cut, std::memory_order_relaxed); }

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

    std::mutex mutex;
    int socket;                                        // mutex; -1 once released
    std::atomic<std::int64_t> deadline = kNotWaiting;  ///< steady clock's count
    std::atomic<std::int64_t> stageBegan = 0;          ///< ditto
    std::atomic<std::int64_t> stageBytes = 0;
    std::atomic<bool> cutAtStop = false;
    bool dropped = false;                                       // the table's mutex
    std::list<std::shared_ptr<TrackedSocket>>::iterator place;  // the table's mutex
};

/// All open connections: how many there may be, and which is to go when there are too many or when
/// its time is up. Any thread.
class ConnectionTable {
public:
    explicit ConnectionTable(std::size_t most) : most(most) {}

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

    [[nodiscard]] std::size_t GetSize() const;

private:
    std::size_t DropSlowestLocked(Time now);
    void Drop(TrackedSocket& tracked);

    std::size_t const most;
    mutable std::mutex mutex;
    std::list<std::shared_ptr<TrackedSocket>> connections;  // mutex
    std::size_t dropped = 0;                                // mutex; of them, on their way out
    bool stopping = false;                                  // mutex
};

}  // namespace quilloservice::http
