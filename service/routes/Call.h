#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/http/Exchange.h"
#include "service/oauth/Sessions.h"

namespace quilloservice {

/// One request on its way through a route, with what the router found out about it. One thread at a
/// time.
class Call {
public:
    explicit Call(std::shared_ptr<http::Exchange> exchange)
        : request(exchange->request), response(exchange->response), exchange(std::move(exchange)) {}

    http::Request const& request;
    http::Response& response;
    std::vector<std::string> ids;  ///< the path's {id}s, each a UUID
    Identity identity;             ///< who asks, on a route that needs a token

    /// The header's value, nothing when it is absent. Throws ApiError 400 when it is given twice.
    [[nodiscard]] std::optional<std::string> Header(std::string_view name) const;

    /// The header's value as a number from 0 up; one that is too large for its type is the largest
    /// there is. Throws ApiError 400 when it is no number.
    [[nodiscard]] std::optional<std::int64_t> NumberHeader(std::string_view name) const;

    /// The header's value as a UUID. Throws ApiError 400 when it is none.
    [[nodiscard]] std::optional<std::string> UuidHeader(std::string_view name) const;

    /// The token of an Authorization header of the scheme Bearer, empty when there is none.
    [[nodiscard]] std::string GetBearerToken() const;

    /// The body, up to 64 KiB; of the routes that get it as a whole.
    [[nodiscard]] std::string const& GetBody() const { return exchange->body; }

    /// The body, which has to be a JSON object. Throws ApiError.
    [[nodiscard]] nlohmann::json ReadJson() const;

    /// The "name" of the body, which has to be a JSON object. Throws ApiError.
    [[nodiscard]] std::string ReadName() const;

    void Answer(int status, nlohmann::json const& body);

    /// An HTML page that may do what `policy`, a Content-Security-Policy, says.
    void AnswerPage(int status, std::string const& html, std::string const& policy);

    /// In the wire's form, or as a page where a browser asks.
    void AnswerError(int status, std::string_view code, std::string_view message);

    /// What ends the client's connection: see http::Exchange::abort.
    [[nodiscard]] std::function<void()> const& GetAbort() const { return exchange->abort; }

private:
    std::shared_ptr<http::Exchange> exchange;
};

}  // namespace quilloservice
