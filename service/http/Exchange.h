#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "service/http/Request.h"
#include "service/http/Response.h"

namespace quilloservice::http {

/// A request and its answer. Belongs to the connection, and to one thread at a time.
struct Exchange {
    Request request;
    std::string body;  ///< of the request, where it is read as a whole
    Response response;

    /// Ends the connection, whatever it is doing. Any thread, at any time, also when the connection
    /// is gone already.
    std::function<void()> abort;
};

/// What is to be done with a request, as its head has it. Each function fills in the response where
/// there is one to give, and throws nothing.
struct Action {
    enum class Body {
        None,    ///< the answer does not wait for it
        Small,   ///< read as a whole, up to 64 KiB, into Exchange::body
        Stream,  ///< handed on in pieces
    };

    Body body = Body::None;
    /// Whether `finish` neither waits for the disk nor for anybody else, and so may run where other
    /// clients are served.
    bool quick = false;

    // For Stream only: before the first piece, and with each. False ends the reading; the response
    // is filled in then.
    std::function<bool()> open{};
    std::function<bool(std::string_view)> take{};

    /// Fills in the response. `complete`: whether the body came to its end; otherwise the client
    /// has gone, or what it sends cannot be understood.
    std::function<void(bool complete)> finish{};
};

/// The server's application.
class Application {
public:
    virtual ~Application() = default;

    /// Decides what becomes of a request, from its head alone; must not block. Any thread.
    virtual Action Begin(std::shared_ptr<Exchange> exchange) = 0;

    /// Fills in the answer to a request that the server refuses by itself.
    virtual void Refuse(Exchange& exchange, int status, std::string_view code,
                        std::string_view message) = 0;
};

}  // namespace quilloservice::http
