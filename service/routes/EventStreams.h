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

#include "service/store/Ids.h"

namespace quilloservice {

class ChangeFeed;
class Sessions;

/// The streams of server-sent events about changed lists. One thread serves all streams. A stream
/// ends when its client disconnects or stops reading, and when its token becomes invalid. Any
/// thread.
class EventStreams {
public:
    /// Limits of all streams, so that descriptors are left for requests, and of one session's.
    static constexpr std::size_t kMaxStreams = 512;
    static constexpr std::size_t kMaxStreamsPerSession = 8;
    static constexpr std::chrono::milliseconds kHeartbeat{15'000};

    /// A client and the position in the feed at which its stream starts.
    struct Follower {
        UserId user;
        std::string token;     ///< its access token
        ChangeNumber since{};  ///< the stream has the changes after this one
        bool reset = false;    ///< changes before that were missed and are no longer kept
    };

    /// The right to one stream, within the limits. The destructor gives it back. May outlive this
    /// object.
    class Slot;

    /// `heartbeat`: the longest time in which nothing is sent.
    EventStreams(ChangeFeed& changes, Sessions const& sessions,
                 std::chrono::milliseconds heartbeat = kHeartbeat);
    ~EventStreams();
    EventStreams(EventStreams const&) = delete;
    EventStreams& operator=(EventStreams const&) = delete;

    /// A follower that starts after `lastEvent`, the last event that the client received, or now.
    [[nodiscard]] Follower MakeFollower(UserId const& user, std::string const& token,
                                        std::optional<ChangeNumber> lastEvent) const;

    /// Reserves a slot for `Take`. Throws ApiError 429 at the session's limit, 503 at that of all
    /// streams.
    std::shared_ptr<Slot> Reserve(SessionId session);

    /// Takes ownership of a socket on which the response head has been sent.
    void Take(int socket, Follower const& follower, std::shared_ptr<Slot> slot);

private:
    struct Slots;
    using Time = std::chrono::steady_clock::time_point;

    struct Stream {
        int socket;
        Follower follower;
        std::shared_ptr<Slot> slot;
        ChangeNumber position;  ///< of the last change sent or in `outbox`
        std::string outbox;     ///< not sent yet
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
    std::list<Stream> streams;  // only on the thread

    std::mutex mutex;
    std::vector<Stream> newcomers;  // mutex
    bool stopping = false;          // mutex
    std::thread thread;
};

}  // namespace quilloservice
