#pragma once

#include <functional>
#include <string>

#include "moxcore/utility/Descriptor.h"
#include "quilloauth/ReturnPage.h"

namespace quilloauth {

/// Listens on a free port of 127.0.0.1 for a browser that is sent back to this program, and answers
/// it with pages. Nobody can hold it up: connections are served side by side, the oldest of too
/// many is closed, and a request's head has a bound.
class LoopbackListener {
public:
    /// Answers a GET of this listener's address; `query` is what stands behind the "?".
    using Handler = std::function<ReturnPage(std::string const& query)>;

    /// Begins to listen; `path` begins with "/" and is the only one that there is, anything else is
    /// answered 404. Throws std::system_error.
    explicit LoopbackListener(std::string path);
    ~LoopbackListener();
    LoopbackListener(LoopbackListener const&) = delete;
    LoopbackListener& operator=(LoopbackListener const&) = delete;

    /// "http://127.0.0.1:PORT/path". Any thread.
    [[nodiscard]] std::string const& Address() const { return address; }

    /// Serves on this thread until Stop, which the handler may call: its page still goes out. The
    /// port is closed when this returns. Once.
    /// Throws std::system_error when connections cannot be taken any more.
    void Serve(Handler const& handler);

    /// Has Serve return, also one that is called later. Any thread.
    void Stop();

private:
    struct Connection;

    [[nodiscard]] std::string Respond(std::string const& head, Handler const& handler) const;

    std::string const path;
    moxcore::utility::Descriptor port;  // until Serve
    moxcore::utility::Descriptor const wake;
    std::string address;
};

}  // namespace quilloauth
