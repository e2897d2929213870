#include "service/routes/EventStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "service/base/ApiError.h"
#include "service/oauth/Sessions.h"
#include "service/store/ChangeFeed.h"

namespace quilloservice {

using nlohmann::json;

namespace {

constexpr std::int64_t kBatch = 256;
// A client that reads nothing for this many heartbeats is dropped.
constexpr int kStalledHeartbeats = 2;

/// At most an eighth of the process's descriptors.
std::size_t MaxStreams() {
    rlimit descriptors{};
    ::getrlimit(RLIMIT_NOFILE, &descriptors);
    return std::min<std::size_t>(EventStreams::kMaxStreams, descriptors.rlim_cur / 8);
}

std::string Event(ChangeNumber number, std::string_view name, json const& data) {
    return "id: " + std::to_string(static_cast<std::int64_t>(number)) +
           "\nevent: " + std::string(name) + "\ndata: " + data.dump() + "\n\n";
}

std::string ChangedEvent(Change const& change) {
    json data = {{"list", change.list}};
    if (change.parent) data["of"] = *change.parent;
    return Event(change.number, "changed", data);
}

/// Discards the client's input; false if the client has disconnected.
bool Drain(int socket) {
    char buffer[512];
    for (;;) {
        ssize_t count = ::recv(socket, buffer, sizeof(buffer), MSG_DONTWAIT);
        if (count > 0 || (count < 0 && errno == EINTR)) continue;
        return count < 0 && errno == EAGAIN;
    }
}

/// Sends as much of `text` as the socket accepts and removes it; false if the connection is broken.
bool SendSome(int socket, std::string& text) {
    while (!text.empty()) {
        ssize_t count = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno == EAGAIN;
        text.erase(0, static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace

/// The number of streams, in all and by session. Outlives the EventStreams if a slot is still held
/// by a response.
struct EventStreams::Slots {
    std::size_t const most = MaxStreams();
    std::mutex mutex;
    std::unordered_map<SessionId, std::size_t> ofSession;  // mutex
    std::size_t count = 0;                                 // mutex
};

class EventStreams::Slot {
public:
    Slot(std::shared_ptr<Slots> slots, SessionId session)
        : slots(std::move(slots)), session(session) {}
    ~Slot() {
        std::scoped_lock lock(slots->mutex);
        --slots->count;
        auto own = slots->ofSession.find(session);
        if (--own->second == 0) slots->ofSession.erase(own);
    }
    Slot(Slot const&) = delete;
    Slot& operator=(Slot const&) = delete;

private:
    std::shared_ptr<Slots> slots;
    SessionId session;
};

EventStreams::EventStreams(ChangeFeed& changes, Sessions const& sessions,
                           std::chrono::milliseconds heartbeat)
    : changes(changes),
      sessions(sessions),
      heartbeat(heartbeat),
      wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      slots(std::make_shared<Slots>()) {
    changes.Listen([this] {
        changed = true;
        Wake();
    });
    thread = std::thread([this] { Run(); });
}

EventStreams::~EventStreams() {
    {
        std::scoped_lock lock(mutex);
        stopping = true;
    }
    Wake();
    thread.join();
    for (Stream const& stream : streams)
        ::close(stream.socket);
    for (Stream const& stream : newcomers)
        ::close(stream.socket);
    ::close(wakeUp);
}

EventStreams::Follower EventStreams::MakeFollower(UserId const& user, std::string const& token,
                                                  std::optional<ChangeNumber> lastEvent) const {
    // Read before the response starts, so that the stream has every change after it.
    bool resumes = lastEvent && changes.Reaches(*lastEvent);
    return {user, token, resumes ? *lastEvent : changes.Position(), lastEvent && !resumes};
}

std::shared_ptr<EventStreams::Slot> EventStreams::Reserve(SessionId session) {
    std::scoped_lock lock(slots->mutex);
    if (slots->count >= slots->most) {
        throw ApiError(503, "unavailable", "Too many clients follow the changes.", 10);
    }
    std::size_t& own = slots->ofSession[session];
    if (own >= kMaxStreamsPerSession) {
        throw ApiError(429, "rate_limited", "A session may have 8 event streams at once.", 10);
    }
    ++own;
    ++slots->count;
    return std::make_shared<Slot>(slots, session);
}

void EventStreams::Take(int socket, Follower const& follower, std::shared_ptr<Slot> slot) {
    {
        std::scoped_lock lock(mutex);
        newcomers.push_back(
            {.socket = socket,
             .follower = follower,
             .slot = std::move(slot),
             .position = follower.since,
             .outbox = Event(follower.since, follower.reset ? "reset" : "ready", json::object())});
    }
    Wake();
}

void EventStreams::Wake() const {
    ::eventfd_write(wakeUp, 1);
}

void EventStreams::Run() {
    std::vector<pollfd> sources;
    for (;;) {
        sources.assign(1, {wakeUp, POLLIN, 0});
        for (Stream const& stream : streams) {
            short events = stream.outbox.empty() ? POLLIN : POLLIN | POLLOUT;
            sources.push_back({stream.socket, events, 0});
        }
        // Streams are checked every half heartbeat and get a comment if they were quiet for half a
        // heartbeat, so none is quiet for longer than a whole one.
        ::poll(sources.data(), sources.size(), static_cast<int>(heartbeat.count() / 2));

        auto source = sources.begin();
        eventfd_t ignored = 0;
        bool woken = source->revents != 0 && ::eventfd_read(wakeUp, &ignored) == 0;
        // A new stream also wakes the thread; only changes make it query the store for all.
        bool hasChanged = changed.exchange(false);
        Time now = std::chrono::steady_clock::now();
        for (Stream& stream : streams) {
            short events = (++source)->revents;
            if ((events & ~POLLOUT) != 0 && !Drain(stream.socket)) stream.over = true;
            stream.behind |= hasChanged;
        }
        if (woken && !TakeNewcomers(now)) return;
        for (Stream& stream : streams)
            Serve(stream, now);
        std::erase_if(streams, [](Stream const& stream) {
            if (stream.over) ::close(stream.socket);
            return stream.over;
        });
    }
}

/// Adds the new streams; false if the thread has to stop.
bool EventStreams::TakeNewcomers(Time now) {
    std::vector<Stream> arrived;
    {
        std::scoped_lock lock(mutex);
        if (stopping) return false;
        arrived.swap(newcomers);
    }
    for (Stream& stream : arrived) {
        stream.lastSent = now;
        streams.push_back(std::move(stream));
    }
    return true;
}

void EventStreams::Serve(Stream& stream, Time now) {
    if (stream.over) return;
    bool quiet = now - stream.lastSent >= heartbeat / 2;
    try {
        if (stream.outbox.empty() && (stream.behind || quiet)) {
            if (!MayFollow(stream)) {
                stream.over = true;
                return;
            }
            if (stream.behind) AddChanges(stream);
            if (stream.outbox.empty() && quiet) stream.outbox = ": nothing new\n\n";
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        stream.over = true;  // the client reconnects and resumes
        return;
    }
    std::size_t before = stream.outbox.size();
    if (!SendSome(stream.socket, stream.outbox)) stream.over = true;
    if (stream.outbox.size() < before) stream.lastSent = now;
    if (!stream.outbox.empty() && now - stream.lastSent >= kStalledHeartbeats * heartbeat) {
        stream.over = true;
    }
    // There is another batch, or there were changes during the last one.
    if (stream.outbox.empty() && stream.behind && !stream.over) Wake();
}

void EventStreams::AddChanges(Stream& stream) const {
    auto batch = changes.After(stream.position, stream.follower.user, kBatch);
    for (Change const& change : batch) {
        stream.outbox += ChangedEvent(change);
        stream.position = change.number;
    }
    stream.behind = batch.size() == static_cast<std::size_t>(kBatch);
}

bool EventStreams::MayFollow(Stream const& stream) const {
    return sessions.Find(stream.follower.token).has_value();
}

}  // namespace quilloservice
