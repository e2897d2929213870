#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "quillocommon/Export.h"

namespace quillosdk {

/// Names, in upper case, and values of an answer's headers.
using Headers = std::map<std::string, std::string, std::less<>>;

/// The service's answer to a request, whatever its status. Read-only once delivered; any thread.
class QUILLOSERVICES_API QuilloResponse {
public:
    QuilloResponse(int status, Headers headers) : status(status), headers(std::move(headers)) {}
    virtual ~QuilloResponse();

    /// Whether the status is one of 200 to 299.
    [[nodiscard]] bool IsSuccessful() const { return status >= 200 && status <= 299; }
    [[nodiscard]] int GetHTTPStatusCode() const { return status; }
    [[nodiscard]] Headers const& GetHeader() const { return headers; }

    /// One sentence: what was refused, and why; empty unless the service has refused.
    [[nodiscard]] std::string const& GetRefusal() const { return refusal; }
    /// Before it is delivered.
    void SetRefusal(std::string text) { refusal = std::move(text); }

private:
    int status;
    Headers headers;
    std::string refusal;
};

}  // namespace quillosdk
