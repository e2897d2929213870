#include "quillohostkit/exporting/JobState.h"

#include <algorithm>
#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::threads::AsyncCallFromMainThread;

ExportJob::State::State(Asset newAsset, std::filesystem::path const& output, Hooks newHooks)
    : asset(std::move(newAsset)), directory(output), hooks(std::move(newHooks)) {}

void ExportJob::State::SetProgress(double fraction) {
    {
        std::lock_guard lock(mutex);
        progress = fraction >= 0 ? std::min(fraction, 1.0) : 0;  // also for what is no number
        if (isEnded || isCancelled || std::exchange(isProgressOnItsWay, true)) return;
    }
    AsyncCallFromMainThread([self = shared_from_this()] { self->TellProgress(); }, 0);
}

void ExportJob::State::TellProgress() {
    double fraction = 0;
    {
        std::lock_guard lock(mutex);
        isProgressOnItsWay = false;
        if (isEnded || isCancelled) return;
        fraction = progress;
    }
    hooks.onProgress(fraction);
}

bool ExportJob::State::IsCancelled() const {
    std::lock_guard lock(mutex);
    return isCancelled;
}

void ExportJob::State::OnCancelled(std::function<void()> handler) {
    {
        std::lock_guard lock(mutex);
        if (isEnded) return;
        if (!isCancelled) {
            cancelHandler.swap(handler);  // the one before dies after the lock
            return;
        }
    }
    if (handler) AsyncCallFromMainThread(handler, 0);
}

void ExportJob::State::FinishLater() {
    std::lock_guard lock(mutex);
    isForLater = true;
}

bool ExportJob::State::IsForLater() const {
    std::lock_guard lock(mutex);
    return isForLater;
}

void ExportJob::State::End(QString const& failure) {
    std::function<void()> dropped;  // dies after the lock
    {
        std::lock_guard lock(mutex);
        if (std::exchange(isEnded, true)) return;
        dropped.swap(cancelHandler);
    }
    AsyncCallFromMainThread([self = shared_from_this(), failure] { self->TellEnd(failure); }, 0);
}

void ExportJob::State::TellEnd(QString const& failure) {
    if (IsCancelled()) return;
    auto reason = failure;
    try {
        if (reason.isEmpty()) directory.Publish();
    } catch (Failure const& unpublished) {
        reason = QString::fromStdString(unpublished.what());
    }
    hooks.onEnd(reason);
}

void ExportJob::State::Cancel() {
    std::function<void()> handler;
    {
        std::lock_guard lock(mutex);
        if (std::exchange(isCancelled, true) || isEnded) return;
        handler.swap(cancelHandler);
    }
    if (handler) handler();
}

}  // namespace quillohostkit
