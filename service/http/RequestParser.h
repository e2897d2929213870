#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// Parses one request, head and body, from a connection's bytes (RFC 9110, RFC 9112). Refuses input
/// that other parsers could read differently, against request smuggling; after that the connection
/// cannot be read any further. One thread at a time.
class RequestParser {
public:
    static constexpr std::size_t kLongestTarget = 8192;
    static constexpr std::size_t kLongestHeader = 8192;
    static constexpr std::size_t kLongestHead = 64 * 1024;
    /// For a chunk's line with its extensions, and for all trailers together.
    static constexpr std::size_t kLongestChunkLine = 8192;

    RequestParser();
    ~RequestParser();
    RequestParser(RequestParser const&) = delete;
    RequestParser& operator=(RequestParser const&) = delete;

    /// Parses the head at the start of `bytes`. Returns its length, or 0 if it is incomplete; then
    /// call again with the same bytes and more. Throws ApiError if the request is to be refused.
    std::size_t ReadHead(std::string_view bytes);

    /// The parsed head; valid after ReadHead has returned more than 0. May be moved from.
    [[nodiscard]] Request& GetRequest();

    /// Parses the next bytes of the body and passes its content to `take`. Returns how many bytes
    /// were consumed; pass the others again with more. Throws ApiError 400 if the body is
    /// malformed.
    std::size_t ReadBody(std::string_view bytes, std::function<void(std::string_view)> const& take);

    /// Whether the whole body has been parsed.
    [[nodiscard]] bool IsComplete() const;

private:
    class Machine;

    std::unique_ptr<Machine> machine;
    std::size_t searched = 0;  ///< the head does not end before this position
};

}  // namespace quilloservice::http
