#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "moxcore/threads/Clock.h"
#include "quilloclient/EventParser.h"
#include "quillocommon/SerialExecutor.h"
#include "quillosdk/Answer.h"
#include "quillosdk/RetryPolicy.h"
#include "quillosdk/Session.h"

namespace quillo {

/// Follows the service's changes for one session. A connection that is lost or refused is made
/// again, after waits that grow and are spread at random; it goes on after the last event that
/// came. What floods it has to wait: no more is read than has been handed over. All of it, the
/// handlers included, on the executor.
class EventStream : public std::enable_shared_from_this<EventStream> {
public:
    struct Handlers {
        /// An event has come, the first one of each connection included.
        std::function<void(Event const&)> onEvent;
        /// Called when all events that have arrived are delivered: repeated ones can be handled
        /// once.
        std::function<void()> onCaughtUp;
        /// Whether changes are heard of now; before the first event and after the last one.
        std::function<void(bool)> onLive;
    };

    EventStream(std::shared_ptr<quillocommon::SerialExecutor> executor,
                std::shared_ptr<quillosdk::Session> session, Handlers handlers);
    ~EventStream();
    EventStream(EventStream const&) = delete;
    EventStream& operator=(EventStream const&) = delete;

    /// Begins, once.
    void Start() { Connect(); }

private:
    void Connect();
    void Take(unsigned connection);
    void TakeEvent(Event const& event);
    void End(quillosdk::Answer const& answer);
    [[nodiscard]] std::chrono::milliseconds NextDelay(quillosdk::Answer const& answer);

    std::shared_ptr<quillocommon::SerialExecutor> const executor;
    std::shared_ptr<quillosdk::Session> const session;
    Handlers const handlers;

    // The executor's:
    std::shared_ptr<quillosdk::BodyPipe> pipe;  // of the connection there is; null between two
    unsigned connections = 0;                   // its number
    std::optional<EventParser> parser;
    std::string lastEventID;
    moxcore::threads::TimePoint liveSince;  // while `isLive`
    bool isLive = false;
    quillosdk::RetryPolicy policy;
};

}  // namespace quillo
