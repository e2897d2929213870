#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// Reads one request, head and body, from the bytes of a connection (RFC 9110, RFC 9112). Strict
/// where leniency would let two readers of the same bytes see different requests: what is not
/// certain is refused, and after a refusal nothing more can be read from the connection. One thread
/// at a time.
class RequestParser {
public:
    static constexpr std::size_t kLongestTarget = 8192;
    static constexpr std::size_t kLongestHeader = 8192;
    static constexpr std::size_t kLongestHead = 64 * 1024;
    /// A line of a chunked body, with its extensions, and all trailers together.
    static constexpr std::size_t kLongestChunkLine = 8192;

    RequestParser();
    ~RequestParser();
    RequestParser(RequestParser const&) = delete;
    RequestParser& operator=(RequestParser const&) = delete;

    /// Reads the head from `bytes`, which begin where the request does. Returns how many of them it
    /// takes up, 0 when it is not there as a whole: then call again with the same bytes and more.
    /// Throws ApiError when the request is to be refused.
    std::size_t ReadHead(std::string_view bytes);

    /// The head; after ReadHead has returned more than 0. May be moved from.
    [[nodiscard]] Request& GetRequest();

    /// Reads what there is of the body from `bytes`, which follow what was read before, and hands
    /// its content to `take`. Returns how many bytes it took up; the rest has to come again with
    /// more. Throws ApiError 400 when the body is malformed.
    std::size_t ReadBody(std::string_view bytes, std::function<void(std::string_view)> const& take);

    /// Whether the body is read to its end.
    [[nodiscard]] bool IsComplete() const;

private:
    class Machine;

    std::unique_ptr<Machine> machine;
    std::size_t searched = 0;  ///< the head's end is not before here
};

}  // namespace quilloservice::http
