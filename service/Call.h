#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/Sessions.h"

namespace httplib {
struct Request;
struct Response;
class ContentReader;
}  // namespace httplib

namespace quilloservice {

/// One request on its way through a route, with what the router found out about it. Belongs to the
/// connection's thread.
class Call {
public:
    Call(const httplib::Request& httpRequest, httplib::Response& httpResponse,
         const httplib::ContentReader* bodyReader)
        : request(httpRequest), response(httpResponse), reader_(bodyReader) {}

    const httplib::Request& request;
    httplib::Response& response;
    std::vector<std::string> ids;  ///< the path's {id}s, each a UUID
    Identity identity;             ///< who asks, on a route that needs a token

    /// The header's value, nothing when it is absent. Throws ApiError 400 when it is given twice.
    [[nodiscard]] std::optional<std::string> Header(const std::string& name) const;

    /// The header's value as a non-negative number. Throws ApiError 400 when it is none.
    [[nodiscard]] std::optional<std::int64_t> NumberHeader(const std::string& name) const;

    /// The header's value as a UUID. Throws ApiError 400 when it is none.
    [[nodiscard]] std::optional<std::string> UuidHeader(const std::string& name) const;

    /// Hands the body to `take` in pieces for as long as that returns true. Returns whether the
    /// body came to its end.
    bool ReadBody(const std::function<bool(std::string_view)>& take);

    /// The whole body. Throws ApiError 413 past 64 KiB.
    std::string ReadSmallBody();

    /// The body, which has to be a JSON object. Throws ApiError.
    nlohmann::json ReadJson();

    /// The "name" of the body, which has to be a JSON object. Throws ApiError.
    std::string ReadName();

    void Answer(int status, const nlohmann::json& body);

    /// An HTML page that may do what `policy`, a Content-Security-Policy, says.
    void AnswerPage(int status, const std::string& html, const std::string& policy);

    void AnswerError(int status, std::string_view code, std::string_view message);

    /// Reads what is left of the body when it is small; otherwise has the connection end after the
    /// answer, so that the body is not taken for the next request.
    void Settle();

private:
    const httplib::ContentReader* reader_;
    bool bodyTouched_ = false;
    bool bodyRead_ = false;
};

}  // namespace quilloservice
