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
    stageBegan_.store(CountOf(now), std::memory_order_relaxed);
    stageBytes_.store(0, std::memory_order_relaxed);
}

void TrackedSocket::BeginWait(Time deadline) {
    deadline_.store(CountOf(deadline), std::memory_order_relaxed);
}

void TrackedSocket::EndWait() {
    deadline_.store(kNotWaiting, std::memory_order_relaxed);
}

void TrackedSocket::Count(std::int64_t bytes) {
    stageBytes_.fetch_add(bytes, std::memory_order_relaxed);
}

void TrackedSocket::ShutDown() {
    std::scoped_lock lock(mutex_);
    if (socket_ >= 0) ::shutdown(socket_, SHUT_RDWR);
}

void TrackedSocket::ShutDownInput() {
    std::scoped_lock lock(mutex_);
    if (socket_ >= 0) ::shutdown(socket_, SHUT_RD);
}

void TrackedSocket::Release() {
    std::scoped_lock lock(mutex_);
    socket_ = -1;
}

double TrackedSocket::Speed(Time now) const {
    Duration age(CountOf(now) - stageBegan_.load(std::memory_order_relaxed));
    // A second more, so that one that has only just come is not the fastest of all.
    double seconds = std::chrono::duration<double>(age).count() + 1;
    return static_cast<double>(stageBytes_.load(std::memory_order_relaxed)) / seconds;
}

std::shared_ptr<TrackedSocket> ConnectionTable::Add(int socket, Time now) {
    auto tracked = std::make_shared<TrackedSocket>(socket);
    tracked->BeginStage(now);
    std::scoped_lock lock(mutex_);
    if (stopping_) return nullptr;
    if (connections_.size() - dropped_ >= most_ && DropSlowestLocked(now) == 0) return nullptr;
    tracked->place_ = connections_.insert(connections_.end(), tracked);
    return tracked;
}

void ConnectionTable::Remove(std::shared_ptr<TrackedSocket> const& tracked) {
    tracked->Release();
    std::scoped_lock lock(mutex_);
    if (tracked->dropped_) --dropped_;
    connections_.erase(tracked->place_);
}

void ConnectionTable::Drop(TrackedSocket& tracked) {
    if (std::exchange(tracked.dropped_, true)) return;
    ++dropped_;
    tracked.ShutDown();
}

void ConnectionTable::DropOverdue(Time now) {
    std::scoped_lock lock(mutex_);
    for (auto const& connection : connections_) {
        if (connection->deadline_.load(std::memory_order_relaxed) < CountOf(now)) {
            Drop(*connection);
        }
    }
}

std::size_t ConnectionTable::DropSlowest(Time now) {
    std::scoped_lock lock(mutex_);
    return DropSlowestLocked(now);
}

std::size_t ConnectionTable::DropSlowestLocked(Time now) {
    struct Candidate {
        double speed;
        std::int64_t stageBegan;
        TrackedSocket* tracked;
    };
    std::vector<Candidate> candidates;
    candidates.reserve(connections_.size());
    for (auto const& connection : connections_) {
        bool waitedFor =
            connection->deadline_.load(std::memory_order_relaxed) != TrackedSocket::kNotWaiting;
        if (!waitedFor || connection->dropped_) continue;
        candidates.push_back({connection->Speed(now),
                              connection->stageBegan_.load(std::memory_order_relaxed),
                              connection.get()});
    }
    // Several at once, since to find one all have to be looked at.
    std::size_t count = std::min(candidates.size(), most_ / 100 + 1);
    std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(count),
                      candidates.end(), [](Candidate const& a, Candidate const& b) {
                          return std::pair(a.speed, a.stageBegan) <
                                 std::pair(b.speed, b.stageBegan);
                      });
    for (std::size_t i = 0; i < count; ++i)
        Drop(*candidates[i].tracked);
    return count;
}

void ConnectionTable::Stop() {
    std::scoped_lock lock(mutex_);
    stopping_ = true;
    for (auto const& connection : connections_) {
        if (connection->cutAtStop_.load(std::memory_order_relaxed)) {
            connection->ShutDown();
        } else {
            connection->ShutDownInput();
        }
    }
}

std::size_t ConnectionTable::size() const {
    std::scoped_lock lock(mutex_);
    return connections_.size();
}

}  // namespace quilloservice::http
