#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "service/http/Request.h"
#include "service/http/Response.h"

namespace quilloservice::http {

/// A request and its response. One thread at a time.
struct Exchange {
    Request request;
    std::string body;  ///< of the request, for Action::Body::Small
    Response response;

    /// Closes the connection at once. Any thread, also after the connection's end.
    std::function<void()> abort;
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

    /// Decides how to process a request, from its head alone. Must not block. Any thread.
    virtual Action Begin(std::shared_ptr<Exchange> exchange) = 0;

    /// Fills in the response to a request that the server itself refuses. Any thread.
    virtual void Refuse(Exchange& exchange, int status, std::string_view code,
                        std::string_view message) = 0;
};

}  // namespace quilloservice::http
