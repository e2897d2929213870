#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "quillosdk/Transport.h"

namespace quillosdk {

/// HTTP/1.1 over libcurl: one multi handle that keeps connections for reuse, on one thread that is
/// started by the first request. Continuations run on that thread and must not block it. Redirects
/// are not followed, so that a token never goes where it was not sent.
class CurlTransport final : public Transport {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// `clock` measures what is too slow; tests replace it. Called on the transport's thread.
    explicit CurlTransport(Clock clock = &std::chrono::steady_clock::now);
    ~CurlTransport() override;
    CurlTransport(CurlTransport const&) = delete;
    CurlTransport& operator=(CurlTransport const&) = delete;

    moxcore::async::Future<std::shared_ptr<HttpResponse>> Send(HttpRequest request) override;

    /// Cancels what is under way, and all that is sent from now on. Waits for the continuations
    /// that run. Not on the transport's own thread.
    void Stop();

private:
    class Loop;
    std::shared_ptr<Loop> loop;
};

}  // namespace quillosdk
