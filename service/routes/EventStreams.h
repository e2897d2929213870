#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quilloservice {

class ChangeFeed;
class Sessions;

/// The clients that follow the changes of their lists (server-sent events), all on one thread of
/// its own, so that they take none from the requests. A stream ends when its client goes or stops
/// reading, and when its token is not valid any more. Any thread.
class EventStreams {
public:
    /// More than these are refused, so that requests always find a descriptor.
    static constexpr std::size_t kMostStreams = 512;
    /// So that no session takes them all.
    static constexpr std::size_t kMostStreamsOfASession = 8;
    static constexpr std::chrono::milliseconds kHeartbeat{15'000};

    /// Who follows, and from where.
    struct Follower {
        std::string user;
        std::string token;
        std::int64_t since = 0;  ///< changes after this one follow
        bool reset = false;      ///< what was missed before is not known any more
    };

    /// The right to one stream, given back at its end. May outlive the streams.
    class Slot;

    /// Something is sent at least each `heartbeat`.
    EventStreams(ChangeFeed& changes, Sessions const& sessions,
                 std::chrono::milliseconds heartbeat = kHeartbeat);
    ~EventStreams();
    EventStreams(EventStreams const&) = delete;
    EventStreams& operator=(EventStreams const&) = delete;

    /// A follower from now on, or from the last event on that it got.
    [[nodiscard]] Follower MakeFollower(std::string const& user, std::string const& token,
                                        std::optional<std::string> const& lastEventId) const;

    /// A slot for a stream of the session, to be filled by Take. Throws ApiError 429 or 503 when
    /// the session, or all of them, have as many as they may.
    std::shared_ptr<Slot> Reserve(std::int64_t session);

    /// Takes over the socket, on which the answer's head has been sent.
    void Take(int socket, Follower const& follower, std::shared_ptr<Slot> slot);

private:
    struct Slots;
    using Time = std::chrono::steady_clock::time_point;

    struct Stream {
        int socket;
        Follower follower;
        std::shared_ptr<Slot> slot;
        std::int64_t position;  ///< the number of the last change that is sent or in `outbox`
        std::string outbox;     ///< what the socket has not taken yet
        bool behind = true;     ///< there may be changes after `position`
        Time lastSent{};
        bool over = false;
    };

    void Run();
    void Wake() const;
    bool TakeNewcomers(Time now);
    void Serve(Stream& stream, Time now);
    void AddChanges(Stream& stream) const;
    [[nodiscard]] bool MayFollow(Stream const& stream) const;

    ChangeFeed const& changes;
    Sessions const& sessions;
    std::chrono::milliseconds const heartbeat;
    int const wakeUp;  ///< an eventfd
    std::atomic<bool> changed = false;
    std::shared_ptr<Slots> const slots;
    std::list<Stream> streams;  // the thread's

    std::mutex mutex;
    std::vector<Stream> newcomers;  // mutex
    bool stopping = false;          // mutex
    std::thread thread;
};

}  // namespace quilloservice
