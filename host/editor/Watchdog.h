#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillohost::editor {

/// Measures how long a thread takes to handle its events, by the class that receives them and by
/// their kind. An event in whose handling other events are sent is measured as a whole; one in
/// whose handling a loop of its own runs, of a menu or of a dialog, is not, as that time is the
/// user's; what that loop handles is. One thread.
class Watchdog {
public:
    /// Since some moment: of the clock on the wall, and of what the thread itself has worked.
    struct Times {
        std::chrono::nanoseconds wall{};
        std::chrono::nanoseconds worked{};
    };

    /// Now, of the calling thread.
    [[nodiscard]] static Times Now();

    /// The handling of an event begins. `receiver` outlives the watchdog; `loop` counts the loops
    /// that run inside each other.
    void Begin(char const* receiver, int eventType, int loop, Times now);
    void End(Times now);

    /// The time of a picture on a usual screen: what takes longer is seen as a halt.
    static constexpr std::chrono::milliseconds kFrame{16};

    /// The measurements, the longest first, as a JSON array: the receiver, the event's type by its
    /// number in QEvent::Type, how many there were and how many took longer than kFrame, and of the
    /// longest its milliseconds on the wall and those in which the thread worked.
    [[nodiscard]] std::string Report() const;

private:
    struct Event {
        std::string_view receiver;
        int type;
        int loop;
        Times begun;
        bool isMeasured;
    };
    struct Seen {
        std::uint64_t count = 0;
        std::uint64_t tooLong = 0;
        Times longest;
    };

    std::vector<Event> handled;  // inside each other
    std::map<std::pair<std::string_view, int>, Seen> seen;
};

}  // namespace quillohost::editor
