#include "quilloauth/Worker.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"
#include "quillocommon/WorkerThread.h"

namespace quilloauth {

void Worker::Add(Function function) {
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
    std::deque<Function> dropped;
    {
        std::lock_guard lock(mutex);
        stopping.request_stop();
        ending = std::move(thread);
        auto const lasting = std::stable_partition(functions.begin(), functions.end(),
                                                   [](auto const& each) { return each.isLasting; });
        std::move(lasting, functions.end(), std::back_inserter(dropped));
        functions.erase(lasting, functions.end());
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
            function.run();
        } catch (...) {
            moxcore::debug::Trace(
                0, "QuilloNative",
                "A function on the sign-in thread failed: " +
                    moxcore::config::ExtractMessageFromException(std::current_exception()));
        }
        function.run = nullptr;
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
