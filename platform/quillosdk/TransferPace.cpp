#include "quillosdk/TransferPace.h"

#include <algorithm>
#include <utility>

namespace quillosdk {
namespace {

/// A slow answer is given up after so long.
constexpr std::chrono::seconds kAnswerWindow{30};

/// Nobody tells when the last byte of a body has been acknowledged.
constexpr std::chrono::seconds kLookAtSending{5};

}  // namespace

TransferPace::TransferPace(std::chrono::seconds stall, std::uint64_t slowest)
    : stall(stall), slowest(slowest) {}

void TransferPace::Begin(Time now, std::uint64_t newBodyBytes) {
    bodyBytes = newBodyBytes;
    received = 0;
    lookedAt = now;
    Enter(bodyBytes > 0 ? Phase::Sending : Phase::Waiting, now);
}

void TransferPace::Acknowledge(Time now, std::uint64_t bytes) {
    if (phase != Phase::Sending) return;
    lookedAt = now;
    if (bytes >= bodyBytes)
        Enter(Phase::Waiting, now);
    else
        Count(now, bytes);
}

void TransferPace::Receive(Time now, std::uint64_t bytes) {
    if (phase != Phase::Receiving) Enter(Phase::Receiving, now);
    received += bytes;
    Count(now, received);
}

void TransferPace::Pause(Time now) {
    if (!std::exchange(isPaused, true)) pausedAt = now;
}

void TransferPace::Resume(Time now) {
    if (std::exchange(isPaused, false)) since += now - pausedAt;
}

TransferPace::Time TransferPace::Deadline() const {
    return phase == Phase::Connecting || isPaused ? Time::max() : since + Window();
}

TransferPace::Time TransferPace::NextLook() const {
    auto const deadline = Deadline();
    return phase == Phase::Sending ? std::min(deadline, lookedAt + kLookAtSending) : deadline;
}

void TransferPace::Enter(Phase newPhase, Time now) {
    phase = newPhase;
    since = now;
    moved = 0;
}

/// Begins a new window once enough for this one has moved.
void TransferPace::Count(Time now, std::uint64_t total) {
    auto const enough = slowest * static_cast<std::uint64_t>(Window().count());
    if (total < moved + std::max<std::uint64_t>(enough, 1)) return;
    since = now;
    moved = total;
}

std::chrono::seconds TransferPace::Window() const {
    return phase == Phase::Receiving && slowest > 0 ? std::min(stall, kAnswerWindow) : stall;
}

}  // namespace quillosdk
