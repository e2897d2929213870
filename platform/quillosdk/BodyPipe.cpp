#include "quillosdk/BodyPipe.h"

#include <algorithm>

namespace quillosdk {

std::string BodyPipe::Take() {
    std::string taken;
    std::function<void()> wake;
    {
        std::lock_guard lock(mutex);
        taken.swap(content);
        if (std::exchange(isWaitedFor, false)) wake = wakeUp;
    }
    if (wake) wake();
    return taken;
}

void BodyPipe::Close() {
    std::string dropped;
    std::function<void()> wake;
    {
        std::lock_guard lock(mutex);
        isClosed = true;
        dropped.swap(content);
        wake = wakeUp;
    }
    if (wake) wake();
}

bool BodyPipe::IsWaitedFor() const {
    std::lock_guard lock(mutex);
    return isWaitedFor;
}

void BodyPipe::SetWakeUp(std::function<void()> newWakeUp) {
    std::lock_guard lock(mutex);
    wakeUp.swap(newWakeUp);
}

BodyPipe::Offered BodyPipe::Offer(std::string_view bytes) {
    {
        std::lock_guard lock(mutex);
        if (isClosed) return Offered::Closed;
        bool const wasEmpty = content.empty();
        isWaitedFor = !wasEmpty && bytes.size() > kMostBytes - std::min(content.size(), kMostBytes);
        if (isWaitedFor) return Offered::Full;
        content += bytes;
        if (!wasEmpty || content.empty()) return Offered::Taken;
    }
    onFilled();
    return Offered::Taken;
}

bool BodyPipe::IsClosed() const {
    std::lock_guard lock(mutex);
    return isClosed;
}

}  // namespace quillosdk
