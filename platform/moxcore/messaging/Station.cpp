#include "moxcore/messaging/Station.h"

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"
#include "moxcore/utility/NoDestructor.h"

namespace moxcore::messaging {
namespace {

using utility::ImmutableString;

/// One listener at one station. Its mutex is held while the listener runs, so that its removal
/// waits for a call under way; recursive, so that a listener may remove itself.
class Entry {
public:
    explicit Entry(Listener* listener) : listener(listener) {}

    void Tell(Message const& message) {
        std::lock_guard lock(mutex);
        if (!listening) return;
        try {
            listener->ListenToMessage(message);
        } catch (...) {
            debug::Trace(0, "moxcore",
                         "A message listener failed: " +
                             config::ExtractMessageFromException(std::current_exception()));
        }
    }

    void End() {
        std::lock_guard lock(mutex);
        listening = false;
    }

private:
    std::recursive_mutex mutex;
    bool listening = true;  // guarded by mutex
    Listener* const listener;
};

/// Who listens at one station, in the order in which they came. A tree of listeners that goes
/// removes each of them: that must not take longer the more there are.
class Entries {
public:
    void Add(Listener const* listener, std::shared_ptr<Entry> entry) {
        byListener.emplace(listener, inOrder.insert(inOrder.end(), std::move(entry)));
    }

    [[nodiscard]] std::shared_ptr<Entry> Remove(Listener const* listener) {
        auto const found = byListener.find(listener);
        if (found == byListener.end()) return nullptr;
        auto entry = *found->second;
        inOrder.erase(found->second);
        byListener.erase(found);
        return entry;
    }

    [[nodiscard]] std::vector<std::shared_ptr<Entry>> All() const {
        return {inOrder.begin(), inOrder.end()};
    }

    [[nodiscard]] bool IsEmpty() const { return inOrder.empty(); }

private:
    using InOrder = std::list<std::shared_ptr<Entry>>;
    InOrder inOrder;
    std::unordered_multimap<Listener const*, InOrder::iterator> byListener;
};

class Stations {
public:
    void Add(ImmutableString const& id, Listener* listener) {
        std::lock_guard lock(mutex);
        stations[id].Add(listener, std::make_shared<Entry>(listener));
    }

    /// The entry taken out; null when there is none.
    [[nodiscard]] std::shared_ptr<Entry> Remove(ImmutableString const& id,
                                                Listener const* listener) {
        std::lock_guard lock(mutex);
        auto const station = stations.find(id);
        if (station == stations.end()) return nullptr;
        auto entry = station->second.Remove(listener);
        if (station->second.IsEmpty()) stations.erase(station);
        return entry;
    }

    [[nodiscard]] std::vector<std::shared_ptr<Entry>> At(ImmutableString const& id) const {
        std::lock_guard lock(mutex);
        auto const station = stations.find(id);
        if (station == stations.end()) return {};
        return station->second.All();
    }

private:
    mutable std::mutex mutex;
    std::map<ImmutableString, Entries> stations;  // guarded by mutex
};

/// Never destroyed: listeners may be removed while the process ends.
Stations& TheStations() {
    static moxcore::utility::NoDestructor<Stations> stations;
    return *stations;
}

}  // namespace

void AddRawListener(ImmutableString const& stationID, Listener* listener) {
    TheStations().Add(stationID, listener);
}

void RemoveRawListener(ImmutableString const& stationID, Listener* listener) {
    if (auto const entry = TheStations().Remove(stationID, listener)) entry->End();
}

void PostMessageToStation(ImmutableString const& stationID, Message const& message) {
    for (auto const& entry : TheStations().At(stationID))
        entry->Tell(message);
}

}  // namespace moxcore::messaging
