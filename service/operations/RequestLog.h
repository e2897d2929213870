#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "service/http/Exchange.h"

namespace quilloservice {

/// Writes a line of JSON about each request. Lines contain no path, query, token or name: the path
/// of a review link is all that somebody needs to see the movie. Any thread; a thread of the log's
/// own writes, so that a reader who has stopped reading holds up no request.
class RequestLog {
public:
    using Writer = std::function<void(std::string_view)>;

    /// Lines that wait for the writer; more are dropped, and counted in a line of their own.
    static constexpr std::size_t kMostWaiting = 10'000;

    /// `write` is called with one or several whole lines, on the log's thread.
    explicit RequestLog(Writer write);
    ~RequestLog();  ///< writes what waits
    RequestLog(RequestLog const&) = delete;
    RequestLog& operator=(RequestLog const&) = delete;

    void Add(http::Exchange const& exchange, http::Outcome const& outcome);

private:
    void Run();

    Writer const write;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::string> waiting;  // mutex
    std::int64_t dropped = 0;         // mutex; since the last line about it
    bool ends = false;                // mutex
    std::thread writer;
};

/// "2026-01-31T23:59:59.123Z"
[[nodiscard]] std::string FormatTimestamp(std::int64_t millisecondsSince1970);

}  // namespace quilloservice
