#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace quillo {

/// One server-sent event.
struct Event {
    std::string id;  ///< the last one in the stream
    std::string type;
    std::string data;
};

/// Reads a stream of server-sent events, as the HTML standard has them, in whatever pieces it
/// comes. One thread.
class EventParser {
public:
    explicit EventParser(std::function<void(Event const&)> onEvent) : onEvent(std::move(onEvent)) {}

    /// Hands on each event that `bytes` completes. Throws a ResultException (kMalformedAnswer) when
    /// the stream holds a line or an event that is longer than any of the service's.
    void Feed(std::string_view bytes);

private:
    void EndLine();
    void TakeField(std::string_view name, std::string_view value);

    std::function<void(Event const&)> const onEvent;
    std::string line;
    bool isFirstLine = true;     ///< may begin with a byte order mark
    bool endedByReturn = false;  ///< a line feed that follows belongs to it
    Event event;  ///< with a line feed behind each line of its data, the last one too
};

}  // namespace quillo
