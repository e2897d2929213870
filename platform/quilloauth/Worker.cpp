#include "quilloauth/Worker.h"

#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"
#include "quillocommon/WorkerThread.h"

namespace quilloauth {

void Worker::Post(std::function<void()> function) {
    {
        std::lock_guard lock(mutex);
        if (stopping.stop_requested()) return;
        functions.push_back(std::move(function));
        if (!thread.joinable())
            thread = quillocommon::StartWorkerThread([this](std::stop_token const&) { Run(); });
    }
    posted.notify_one();
}

void Worker::Stop() {
    std::jthread ending;
    std::deque<std::function<void()>> dropped;
    {
        std::lock_guard lock(mutex);
        stopping.request_stop();
        ending = std::move(thread);
        dropped.swap(functions);
    }
}  // `ending` is joined here

void Worker::Run() {
    auto const stop = stopping.get_token();
    std::unique_lock lock(mutex);
    while (posted.wait(lock, stop, [this] { return !functions.empty(); })) {
        auto function = std::move(functions.front());
        functions.pop_front();
        lock.unlock();
        try {
            function();
        } catch (...) {
            moxcore::debug::Trace(
                0, "QuilloNative",
                "A function on the sign-in thread failed: " +
                    moxcore::config::ExtractMessageFromException(std::current_exception()));
        }
        function = nullptr;
        lock.lock();
    }
}

void Worker::Gate::Open() {
    {
        std::lock_guard lock(mutex);
        open = true;
    }
    opened.notify_all();
}

bool Worker::Gate::Wait(std::stop_token const& stop) {
    std::unique_lock lock(mutex);
    return opened.wait(lock, stop, [this] { return open; });
}

}  // namespace quilloauth
