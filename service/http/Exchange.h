#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "service/http/Pace.h"
#include "service/http/Request.h"
#include "service/http/Response.h"

namespace quilloservice::http {

/// A request and its response. One thread at a time.
struct Exchange {
    std::string id;          ///< of the request, in the logs; set by the application
    std::string_view route;  ///< the pattern that the path matches; ditto, empty if there is none
    Request request;
    std::string body;  ///< of the request, for Action::Body::Small
    Response response;

    /// Closes the connection at once. Any thread, also after the connection's end.
    std::function<void()> abort;
};

/// How an exchange ended.
struct Outcome {
    Duration took{};            ///< from the request's first byte to the end
    std::int64_t received = 0;  ///< bytes of the request's body
    std::int64_t sent = 0;      ///< bytes of the response, with its head
    bool isComplete = false;    ///< the whole response was sent; for an endless one, its head
};

/// How to process a request, decided from its head. The functions fill in the response and must not
/// throw.
struct Action {
    enum class Body {
        None,    ///< not needed
        Small,   ///< read into Exchange::body, up to 64 KiB
        Stream,  ///< passed to `take` in pieces
    };

    Body body = Body::None;
    /// Whether `finish` never waits, not even for the disk, and so may run on an I/O thread.
    bool quick = false;

    // For Stream: called before the first piece, and with each piece. False ends the reading, with
    // the response filled in.
    std::function<bool()> open{};
    std::function<bool(std::string_view)> take{};

    /// Fills in the response. `complete`: whether the whole body has arrived; if not, the client
    /// has disconnected or the body is malformed.
    std::function<void(bool complete)> finish{};
};

/// The server's application.
class Application {
public:
    virtual ~Application() = default;

    /// Decides how to process a request, from its head alone. Must not block unless
    /// Limits::beginMayWait says so. Any thread.
    virtual Action Begin(std::shared_ptr<Exchange> exchange) = 0;

    /// Fills in the response to a request that the server itself refuses. Any thread.
    virtual void Refuse(Exchange& exchange, int status, std::string_view code,
                        std::string_view message) = 0;

    /// An exchange that was begun or refused has ended. Must not block. Any thread.
    virtual void Ended(Exchange const& exchange, Outcome const& outcome) = 0;
};

}  // namespace quilloservice::http
