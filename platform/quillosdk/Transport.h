#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/BodyPipe.h"
#include "quillosdk/BodySource.h"
#include "quillosdk/QuilloResponse.h"

namespace quillosdk {

/// Names and values of a request's headers.
using HeaderFields = std::vector<std::pair<std::string, std::string>>;

/// One HTTP request. Its headers may hold a token: never print or trace a request.
struct HttpRequest {
    std::string method;
    std::string url;
    HeaderFields headers;
    std::shared_ptr<HeaderFields const> commonHeaders;   ///< sent before those; null: none
    std::shared_ptr<std::string const> body;             ///< null: none
    std::shared_ptr<BodySource const> bodySource;        ///< the body, instead; null: none
    std::function<void(std::uint64_t)> onBytesSent;      ///< body bytes sent so far; may be empty.
                                                         ///< What it throws fails the request.
    std::size_t maxAnswerBytes = std::size_t{64} << 20;  ///< a longer body fails the request
    std::chrono::seconds stallTimeout{60};  ///< gives up when nothing moves for so long
    std::uint64_t slowestRate =
        1024;  ///< in bytes a second: gives up an answer that is slower over
               ///< 30 s, and a body over the time above; 0: any will do
    /// Takes the body of a successful answer as it comes, however long it is, and none of it is
    /// kept then. May be null.
    std::shared_ptr<BodyPipe> answerPipe;
};

/// How many bytes the body of a request has.
[[nodiscard]] inline std::uint64_t BodySize(HttpRequest const& request) {
    if (request.bodySource) return request.bodySource->Size();
    return request.body ? request.body->size() : 0;
}

struct HttpResponse {
    int status = 0;
    Headers headers;
    std::string body;
};

/// Carries requests to the service and their answers back. A request other than GET and HEAD is
/// sent once for each Send, whatever becomes of the connection. The one way out of these libraries,
/// so that tests can put something else behind them. Any thread.
class Transport {
public:
    virtual ~Transport();

    /// Sends the request. Any answer is a success here, whatever its status; the future fails with
    /// a TransportResult when there was none, and is cancelled when the transport ends first.
    virtual moxcore::async::Future<std::shared_ptr<HttpResponse>> Send(HttpRequest request) = 0;

    /// The process's transport: by default libcurl's, with one thread of its own and connections
    /// that are reused.
    [[nodiscard]] static std::shared_ptr<Transport> Get();

    /// Puts `transport` in its place; null brings the default back. For tests.
    static void Set(std::shared_ptr<Transport> transport);
};

/// The results that failed requests carry.
enum TransportResult : std::int32_t {
    kNoConnection = static_cast<std::int32_t>(0xBB580001),  ///< the service could not be reached
    kConnectionLost =
        static_cast<std::int32_t>(0xBB580002),  ///< cut or stalled before the answer was complete
    kAnswerTooLarge = static_cast<std::int32_t>(0xBB580003),  ///< longer than maxAnswerBytes
    kMalformedAnswer =
        static_cast<std::int32_t>(0xBB580004),  ///< not what the service should have said
    kBadRequest = static_cast<std::int32_t>(
        0xBB580005),  ///< could not be sent: no address, or one whose certificate is not
                      ///< trusted; repeating it is in vain
    kRefused = static_cast<std::int32_t>(0xBB580006),    ///< answered, with an unsuccessful status
    kCalledOff = static_cast<std::int32_t>(0xBB580007),  ///< before there was an answer
};

}  // namespace quillosdk
