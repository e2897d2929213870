#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>

#include "service/http/Pace.h"

namespace quilloservice::http {

/// A connection's entry in the table. The connection's thread writes it, the table reads it.
class TrackedSocket {
public:
    explicit TrackedSocket(int socket) : socket(socket) {}

    /// Starts a new stage of the exchange (head, body, response), for which speed is measured.
    void BeginStage(Time now);
    /// The connection waits for its client, until `until` at the latest.
    void BeginWait(Time until);
    void EndWait();
    /// Counts bytes sent or received.
    void Count(std::int64_t bytes);

    /// Whether ConnectionTable::Stop closes the connection at once, in the middle of a response.
    void CutAtStop(bool cut) { cutAtStop.store(cut, std::memory_order_relaxed); }

    /// Whether the connection serves a request, so that ConnectionTable::Drain leaves it alone.
    void SetBusy(bool busy) { isBusy = busy; }

    /// Shuts the socket down in both directions, or for input only, which wakes the connection. Any
    /// thread.
    void ShutDown();
    void ShutDownInput();

    /// Call before the socket is closed or handed over.
    void Release();

private:
    friend class ConnectionTable;
    static constexpr std::int64_t kNotWaiting = INT64_MAX;

    /// Bytes per second since the stage began.
    [[nodiscard]] double Speed(Time now) const;

    std::mutex mutex;
    int socket;                                        // mutex; -1 once released
    std::atomic<std::int64_t> deadline = kNotWaiting;  ///< in ticks of the steady clock
    std::atomic<std::int64_t> stageBegan = 0;          ///< ditto
    std::atomic<std::int64_t> stageBytes = 0;
    std::atomic<bool> cutAtStop = false;
    std::atomic<bool> isBusy = false;
    bool dropped = false;                                       // the table's mutex
    std::list<std::shared_ptr<TrackedSocket>>::iterator entry;  // the table's mutex
};

/// All open connections. Limits their number and drops slow and overdue ones. Any thread.
class ConnectionTable {
public:
    explicit ConnectionTable(std::size_t most) : most(most) {}

    /// Adds a connection. If the table is full, drops the slowest of the connections that wait for
    /// their clients; if none does, refuses the new one and returns nullptr.
    std::shared_ptr<TrackedSocket> Add(int socket, Time now);
    void Remove(std::shared_ptr<TrackedSocket> const& tracked);

    /// Drops the connections whose wait has passed its deadline.
    void DropOverdue(Time now);

    /// Drops the slowest hundredth of the waiting connections, at least one. Returns how many.
    std::size_t DropSlowest(Time now);

    /// Ends the input of the connections that serve no request, and refuses new ones.
    void Drain();

    /// Ends the input of all connections, and closes those that are sending long responses.
    void Stop();

    [[nodiscard]] std::size_t GetSize() const;

private:
    std::size_t DropSlowestLocked(Time now);
    void Drop(TrackedSocket& tracked);

    std::size_t const most;
    mutable std::mutex mutex;
    std::list<std::shared_ptr<TrackedSocket>> connections;  // mutex
    std::size_t dropped = 0;  // mutex; in `connections`, not removed yet
    bool stopping = false;    // mutex
};

}  // namespace quilloservice::http
