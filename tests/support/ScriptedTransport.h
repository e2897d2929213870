#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Transport.h"

namespace testsupport {

/// The value of the request's header, empty when it has none of this name (in the case it was sent
/// in).
[[nodiscard]] std::string HeaderOf(quillosdk::HttpRequest const& request, std::string const& name);

/// The bytes of the request's body.
[[nodiscard]] std::string BodyOf(quillosdk::HttpRequest const& request);

/// Stands in for the network as long as it lives: keeps every request that is sent and answers it
/// when the test says so. Make it before the code under test sends anything, and drop it after that
/// has come to rest. Any thread.
class ScriptedTransport {
public:
    /// Answers a request at once, inside Send; none leaves it for the test to answer.
    using Responder =
        std::function<std::optional<quillosdk::HttpResponse>(quillosdk::HttpRequest const&)>;

    /// Where the service is; the service address meanwhile.
    static constexpr char kAddress[] = "https://service.test";

    ScriptedTransport();
    ~ScriptedTransport();
    ScriptedTransport(ScriptedTransport const&) = delete;
    ScriptedTransport& operator=(ScriptedTransport const&) = delete;

    /// How many requests have been sent.
    [[nodiscard]] std::size_t Count() const;

    /// Sleeps until `count` requests have been sent, for code that sends from a thread of its own.
    void WaitForCount(std::size_t count) const;

    /// The request that was sent as number `index`, from 0.
    [[nodiscard]] quillosdk::HttpRequest const& At(std::size_t index) const;

    /// Its method and its path at the service: "GET /v1/me".
    [[nodiscard]] std::string LineAt(std::size_t index) const;

    /// The value of its header; see HeaderOf.
    [[nodiscard]] std::string HeaderAt(std::size_t index, std::string const& name) const;

    // The answer to a request, once. Continuations run inside these calls, on the calling thread:
    // to have them run on another one, call from there.

    void Answer(std::size_t index, int status, std::string body = {},
                quillosdk::Headers headers = {});
    void Fail(std::size_t index, moxcore::config::Result result,
              std::string const& message = "the test has failed it");
    void Cancel(std::size_t index);

    /// What its sender waits for.
    [[nodiscard]] moxcore::async::Future<std::shared_ptr<quillosdk::HttpResponse>> FutureAt(
        std::size_t index) const;

    /// Tells the request how much of its body is on the way.
    void ReportSent(std::size_t index, std::uint64_t bytes);

    /// Has a piece of the request's answer come, for one that takes its body as it comes; false
    /// when its pipe has no room for it now.
    bool SendBody(std::size_t index, std::string const& bytes);

    /// Answers the requests sent from now on; an empty one leaves them to the test. It may throw:
    /// the request then fails with that.
    void SetResponder(Responder responder);

private:
    class Line;
    std::shared_ptr<Line> line;
    std::string addressBefore;
};

}  // namespace testsupport
