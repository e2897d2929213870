#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "quillosdk/AnswerHead.h"
#include "quillosdk/CurlSockets.h"
#include "quillosdk/TransferPace.h"
#include "quillosdk/Transport.h"

namespace quillosdk {

/// One request as a curl easy handle, from its setting up to its answer. Made on the caller's
/// thread, then the transport's alone.
class CurlExchange {
public:
    /// State shared by the exchanges of a transport; outlives them.
    struct Shared {
        std::function<TransferPace::Time()> clock;
        CurlSockets sockets;
    };

    /// Throws a ResultException (kBadRequest) for a request that cannot be sent as it is.
    CurlExchange(HttpRequest newRequest, Shared& shared);
    ~CurlExchange();
    CurlExchange(CurlExchange const&) = delete;
    CurlExchange& operator=(CurlExchange const&) = delete;

    [[nodiscard]] CURL* Handle() const { return easy.get(); }

    [[nodiscard]] moxcore::async::Future<std::shared_ptr<HttpResponse>> GetFuture() const {
        return promise.GetFuture();
    }

    /// Where the answer's body goes; null when it is kept.
    [[nodiscard]] BodyPipe* Pipe() const { return request.answerPipe.get(); }

    /// Goes on reading when that had to wait for the pipe.
    void Resume();

    /// Calls `newOnBegin` when the connection is there and the request goes out.
    void SetOnBegin(std::function<void()> newOnBegin) { onBegin = std::move(newOnBegin); }

    /// Whether the exchange is too slow to be waited for; if not, when to look again.
    [[nodiscard]] bool IsTooSlow();
    [[nodiscard]] TransferPace::Time NextLook() const { return pace.NextLook(); }

    /// Completes the future with what `code` says of the transfer that has ended. The request's
    /// body and the handle are let go first, so that continuations find them free.
    static void Finish(std::unique_ptr<CurlExchange> exchange, CURLcode code);

private:
    struct CurlDeleter {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    void SetUpConnection(bool loopback);
    void SetUpRequest();
    void AddHeaders(HeaderFields const& fields);
    void AddHeader(std::string const& line);
    [[nodiscard]] bool MayBeRepeated() const;
    [[nodiscard]] std::uint64_t AcknowledgedBytes() const;
    [[nodiscard]] bool HasSucceeded() const;
    [[nodiscard]] std::size_t HandOn(std::string_view bytes);
    [[nodiscard]] bool Keep(std::string_view bytes);
    void ReadHeaderLine(std::string_view line);
    [[nodiscard]] TransportResult ResultOf(CURLcode code) const;
    [[nodiscard]] std::string MessageOf(CURLcode code) const;

    static int OnBegin(void* self, char*, char*, int, int localPort);
    static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t OnBody(char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* self);
    static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);

    std::unique_ptr<CURL, CurlDeleter> easy;
    std::unique_ptr<curl_slist, CurlDeleter> headers;
    HttpRequest request;
    Shared& shared;
    TransferPace pace;
    std::function<void()> onBegin;
    bool hasBegun = false;
    curl_socket_t socket = CURL_SOCKET_BAD;  // once it has begun
    std::uint64_t bytesRead = 0;             // of a body that is read while it is sent
    std::uint64_t bytesSent = 0;
    std::size_t headerBytes = 0;
    bool isFinal = false;  // the headers that come are of no interim answer
    AnswerHead head;
    bool tooLarge = false;
    std::exception_ptr thrown;  // by onBytesSent, or by the body's source
    char errorText[CURL_ERROR_SIZE] = {};
    std::shared_ptr<HttpResponse> response = std::make_shared<HttpResponse>();
    moxcore::async::Promise<std::shared_ptr<HttpResponse>> promise;
};

}  // namespace quillosdk
