#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "service/http/Request.h"

namespace quilloservice::http {

/// Content that is read while it is sent. One thread at a time.
class Content {
public:
    virtual ~Content() = default;

    /// Reads the next piece into `buffer`; returns its size, 0 at the end. Throws when it cannot.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
};

/// What a request is answered with.
struct Response {
    int status = 200;
    Fields headers;    ///< but those that say how the message is sent: its length, date, connection
    std::string body;  ///< unless `content` is there

    std::unique_ptr<Content> content;
    std::int64_t contentLength = 0;  ///< of `content`

    bool closes = false;  ///< the connection ends after this answer
    bool cut = false;     ///< there is no answer: the connection ends here and now

    /// Gets the socket once the head is sent, and owns it from then on: for answers of unknown
    /// length, that go on for longer than a request. What the client has sent further is dropped.
    std::function<void(int)> takeOver;

    /// Sets a header, in place of an earlier one of this name.
    void SetHeader(std::string_view name, std::string value);
    /// Adds an element to a header that is a list.
    void AddToHeader(std::string_view name, std::string_view element);
    void RemoveHeader(std::string_view name);
    [[nodiscard]] bool HasHeader(std::string_view name) const;

    void SetBody(std::string text, std::string type);
    void Redirect(int redirectStatus, std::string location);

    /// The head as it is sent. `date` is the value of the header Date.
    [[nodiscard]] std::string Head(std::string_view date, bool lastOnConnection) const;
};

/// `unixTime` as the header Date wants it (RFC 9110, section 5.6.7).
std::string FormatDate(std::int64_t unixTime);

}  // namespace quilloservice::http
