#include "moxcore/messaging/Station.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"

namespace moxcore::messaging {
namespace {

using utility::ImmutableString;

/// One listener at one station. Its mutex is held while the listener runs, so that whoever removes
/// it waits for a call under way; recursive, so that a listener may remove itself.
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

    [[nodiscard]] bool IsFor(Listener const* other) const { return listener == other; }

private:
    std::recursive_mutex mutex;
    bool listening = true;  // guarded by mutex
    Listener* const listener;
};

using Entries = std::vector<std::shared_ptr<Entry>>;

class Stations {
public:
    void Add(ImmutableString const& id, std::shared_ptr<Entry> entry) {
        std::lock_guard lock(mutex);
        stations[id].push_back(std::move(entry));
    }

    /// The entry taken out; null when there is none.
    [[nodiscard]] std::shared_ptr<Entry> Remove(ImmutableString const& id,
                                                Listener const* listener) {
        std::lock_guard lock(mutex);
        auto const station = stations.find(id);
        if (station == stations.end()) return nullptr;
        auto& entries = station->second;
        auto const found = std::find_if(entries.begin(), entries.end(),
                                        [&](auto const& entry) { return entry->IsFor(listener); });
        if (found == entries.end()) return nullptr;
        auto entry = *found;
        entries.erase(found);
        if (entries.empty()) stations.erase(station);
        return entry;
    }

    [[nodiscard]] Entries At(ImmutableString const& id) const {
        std::lock_guard lock(mutex);
        auto const station = stations.find(id);
        return station == stations.end() ? Entries() : station->second;
    }

private:
    mutable std::mutex mutex;
    std::map<ImmutableString, Entries> stations;  // guarded by mutex
};

/// Never destroyed: listeners may be removed while the process ends.
Stations& TheStations() {
    static Stations& stations = *new Stations;
    return stations;
}

}  // namespace

void AddRawListener(ImmutableString const& stationID, Listener* listener) {
    TheStations().Add(stationID, std::make_shared<Entry>(listener));
}

void RemoveRawListener(ImmutableString const& stationID, Listener* listener) {
    if (auto const entry = TheStations().Remove(stationID, listener)) entry->End();
}

void PostMessageToStation(ImmutableString const& stationID, Message const& message) {
    for (auto const& entry : TheStations().At(stationID))
        entry->Tell(message);
}

}  // namespace moxcore::messaging
