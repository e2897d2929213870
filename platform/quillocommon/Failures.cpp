#include "quillocommon/Failures.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"
#include "moxcore/threads/MainThread.h"
#include "moxcore/utility/NoDestructor.h"

namespace quillocommon {
namespace {

constexpr char kTraceCategory[] = "QuilloNative";

/// One listener. Its mutex is held while the listener runs, so that the end of the subscription
/// waits for a call under way; recursive, so that a listener that causes a failure itself does not
/// wait for itself.
class Entry {
public:
    explicit Entry(FailureListener listener) : listener(std::move(listener)) {}

    void Tell(Failure const& failure) {
        std::lock_guard lock(mutex);
        if (!listening) return;
        try {
            listener(failure);
        } catch (...) {
            moxcore::debug::Trace(1, kTraceCategory, "A failure listener has thrown.");
        }
    }

    void End() {
        std::lock_guard lock(mutex);
        listening = false;
    }

private:
    std::recursive_mutex mutex;
    bool listening = true;  // guarded by mutex
    FailureListener const listener;
};

class Listeners {
public:
    void Add(std::shared_ptr<Entry> entry) {
        std::lock_guard lock(mutex);
        entries.push_back(std::move(entry));
    }

    void Remove(std::shared_ptr<Entry> const& entry) {
        std::lock_guard lock(mutex);
        std::erase(entries, entry);
    }

    [[nodiscard]] std::vector<std::shared_ptr<Entry>> All() const {
        std::lock_guard lock(mutex);
        return entries;
    }

private:
    mutable std::mutex mutex;
    std::vector<std::shared_ptr<Entry>> entries;  // guarded by mutex
};

/// Never destroyed: requests may fail while the process ends.
Listeners& TheListeners() {
    static moxcore::utility::NoDestructor<Listeners> listeners;
    return *listeners;
}

class Subscription final : public FailureSubscription {
public:
    explicit Subscription(std::shared_ptr<Entry> entry) : entry(std::move(entry)) {}
    ~Subscription() override {
        TheListeners().Remove(entry);
        entry->End();
    }
    Subscription(Subscription const&) = delete;
    Subscription& operator=(Subscription const&) = delete;

private:
    std::shared_ptr<Entry> entry;
};

void ReportHandler(std::exception_ptr const& thrown) {
    using namespace moxcore::config;
    auto const result = ExtractResultFromException(thrown);
    ReportFailure({Step::HandleEvent, result < 0 ? result : kUnknownFailure, 0,
                   "What an event has called failed: " + ExtractMessageFromException(thrown)});
}

/// Subscribes to the exceptions of handlers, which the toolkit passes to the main thread.
void SubscribeToHandlers() {
    static bool const isSubscribed = [] {
        moxcore::threads::MainThread::SetFailureObserver(ReportHandler);
        return true;
    }();
    static_cast<void>(isSubscribed);
}

}  // namespace

FailureSubscription::~FailureSubscription() = default;

std::shared_ptr<FailureSubscription> ListenToFailures(FailureListener listener) {
    SubscribeToHandlers();
    auto entry = std::make_shared<Entry>(std::move(listener));
    TheListeners().Add(entry);
    return std::make_shared<Subscription>(std::move(entry));
}

void ReportFailure(Failure const& failure) {
    moxcore::debug::Trace(1, kTraceCategory, failure.message);
    for (auto const& entry : TheListeners().All())
        entry->Tell(failure);
}

}  // namespace quillocommon
