#include "service/http/ConnectionTable.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace quilloservice::http {

namespace {

std::int64_t CountOf(Time time) {
    return time.time_since_epoch().count();
}

}  // namespace

void TrackedSocket::BeginStage(Time now) {
    stageBegan.store(CountOf(now), std::memory_order_relaxed);
    stageBytes.store(0, std::memory_order_relaxed);
}

void TrackedSocket::BeginWait(Time until) {
    deadline.store(CountOf(until), std::memory_order_relaxed);
}

void TrackedSocket::EndWait() {
    deadline.store(kNotWaiting, std::memory_order_relaxed);
}

void TrackedSocket::Count(std::int64_t bytes) {
    stageBytes.fetch_add(bytes, std::memory_order_relaxed);
}

void TrackedSocket::ShutDown() {
    std::scoped_lock lock(mutex);
    if (socket >= 0) ::shutdown(socket, SHUT_RDWR);
}

void TrackedSocket::ShutDownInput() {
    std::scoped_lock lock(mutex);
    if (socket >= 0) ::shutdown(socket, SHUT_RD);
}

void TrackedSocket::Release() {
    std::scoped_lock lock(mutex);
    socket = -1;
}

double TrackedSocket::Speed(Time now) const {
    Duration age(CountOf(now) - stageBegan.load(std::memory_order_relaxed));
    // One second is added, or a connection would be the fastest when it has just arrived.
    double seconds = std::chrono::duration<double>(age).count() + 1;
    return static_cast<double>(stageBytes.load(std::memory_order_relaxed)) / seconds;
}

std::shared_ptr<TrackedSocket> ConnectionTable::Add(int socket, Time now) {
    auto tracked = std::make_shared<TrackedSocket>(socket);
    tracked->BeginStage(now);
    std::scoped_lock lock(mutex);
    if (stopping) return nullptr;
    if (connections.size() - dropped >= most && DropSlowestLocked(now) == 0) return nullptr;
    tracked->entry = connections.insert(connections.end(), tracked);
    return tracked;
}

void ConnectionTable::Remove(std::shared_ptr<TrackedSocket> const& tracked) {
    tracked->Release();
    std::scoped_lock lock(mutex);
    if (tracked->dropped) --dropped;
    connections.erase(tracked->entry);
}

void ConnectionTable::Drop(TrackedSocket& tracked) {
    if (std::exchange(tracked.dropped, true)) return;
    ++dropped;
    tracked.ShutDown();
}

void ConnectionTable::DropOverdue(Time now) {
    std::scoped_lock lock(mutex);
    for (auto const& connection : connections) {
        if (connection->deadline.load(std::memory_order_relaxed) < CountOf(now)) {
            Drop(*connection);
        }
    }
}

std::size_t ConnectionTable::DropSlowest(Time now) {
    std::scoped_lock lock(mutex);
    return DropSlowestLocked(now);
}

std::size_t ConnectionTable::DropSlowestLocked(Time now) {
    struct Candidate {
        double speed;
        std::int64_t stageBegan;
        TrackedSocket* tracked;
    };
    std::vector<Candidate> candidates;
    candidates.reserve(connections.size());
    for (auto const& connection : connections) {
        bool waits =
            connection->deadline.load(std::memory_order_relaxed) != TrackedSocket::kNotWaiting;
        if (!waits || connection->dropped) continue;
        candidates.push_back({connection->Speed(now),
                              connection->stageBegan.load(std::memory_order_relaxed),
                              connection.get()});
    }
    // Several at once, since finding one takes a scan of the table.
    std::size_t count = std::min(candidates.size(), most / 100 + 1);
    std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(count),
                      candidates.end(), [](Candidate const& a, Candidate const& b) {
                          return std::pair(a.speed, a.stageBegan) <
                                 std::pair(b.speed, b.stageBegan);
                      });
    for (std::size_t i = 0; i < count; ++i)
        Drop(*candidates[i].tracked);
    return count;
}

void ConnectionTable::Drain() {
    std::scoped_lock lock(mutex);
    stopping = true;
    for (auto const& connection : connections) {
        if (!connection->isBusy) connection->ShutDownInput();
    }
}

void ConnectionTable::Stop() {
    std::scoped_lock lock(mutex);
    stopping = true;
    for (auto const& connection : connections) {
        if (connection->cutAtStop.load(std::memory_order_relaxed)) {
            connection->ShutDown();
        } else {
            connection->ShutDownInput();
        }
    }
}

std::size_t ConnectionTable::GetSize() const {
    std::scoped_lock lock(mutex);
    return connections.size();
}

}  // namespace quilloservice::http
