#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// Content that is read while it is being sent. One thread at a time.
class Content {
public:
    virtual ~Content() = default;

    /// Reads the next piece into `buffer`; returns its size, 0 at the end. Throws on failure.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
};

/// The response to a request.
struct Response {
    int status = 200;
    Fields headers;    ///< without Content-Length, Date and Connection
    std::string body;  ///< unless `content` is set

    std::unique_ptr<Content> content;
    std::int64_t contentLength = 0;  ///< length of `content`

    bool closes = false;  ///< the connection ends after this response
    bool cut = false;     ///< no response is sent: the connection ends at once

    /// Takes ownership of the socket after the head is sent, for streams without an end. Further
    /// input that the connection has read is discarded.
    std::function<void(int)> takeOver;

    /// Sets or replaces a header. Line breaks in `value` are removed.
    void SetHeader(std::string_view name, std::string value);
    /// Adds an element to a list header.
    void AddToHeader(std::string_view name, std::string_view element);
    void RemoveHeader(std::string_view name);
    [[nodiscard]] bool HasHeader(std::string_view name) const;

    void SetBody(std::string text, std::string type);
    void Redirect(int redirectStatus, std::string location);

    /// The serialised head. `date` is the value of the header Date.
    [[nodiscard]] std::string Head(std::string_view date, bool lastOnConnection) const;
};

/// Formats a time for the header Date (RFC 9110, section 5.6.7).
std::string FormatDate(std::int64_t unixTime);

}  // namespace quilloservice::http
