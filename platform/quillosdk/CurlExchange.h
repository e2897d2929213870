#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "quillosdk/Transport.h"

namespace quillosdk {

/// One request as a curl easy handle, from its setting up to its answer. Made on the caller's
/// thread, then the transport's alone.
class CurlExchange {
public:
    /// Throws a ResultException (kBadRequest) for a request that cannot be sent as it is.
    explicit CurlExchange(HttpRequest newRequest);
    ~CurlExchange();
    CurlExchange(CurlExchange const&) = delete;
    CurlExchange& operator=(CurlExchange const&) = delete;

    [[nodiscard]] CURL* Handle() const { return easy.get(); }

    [[nodiscard]] moxcore::async::Future<std::shared_ptr<HttpResponse>> GetFuture() const {
        return promise.GetFuture();
    }

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
    [[nodiscard]] bool HasSucceeded() const;
    void ReadHeaderLine(std::string_view line);
    [[nodiscard]] TransportResult ResultOf(CURLcode code) const;
    [[nodiscard]] std::string MessageOf(CURLcode code) const;

    static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t OnBody(char* data, std::size_t size, std::size_t count, void* self);
    static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);

    std::unique_ptr<CURL, CurlDeleter> easy;
    std::unique_ptr<curl_slist, CurlDeleter> headers;
    HttpRequest request;
    std::uint64_t bytesSent = 0;
    bool headersComplete = false;
    bool tooLarge = false;
    std::exception_ptr thrown;  // by onBytesSent or onBody
    char errorText[CURL_ERROR_SIZE] = {};
    std::shared_ptr<HttpResponse> response = std::make_shared<HttpResponse>();
    moxcore::async::Promise<std::shared_ptr<HttpResponse>> promise;
};

}  // namespace quillosdk
