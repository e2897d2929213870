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
#include "service/store/Ids.h"

namespace quilloservice {

struct PathTag : UuidForm {};

/// An ID in a request's path, before its route has given it a kind.
using PathId = Id<PathTag>;

/// A request and its response, with the IDs and the identity found by the router. One thread at a
/// time.
class Call {
public:
    explicit Call(std::shared_ptr<http::Exchange> exchange)
        : request(exchange->request), response(exchange->response), exchange(std::move(exchange)) {}

    http::Request const& request;
    http::Response& response;
    std::vector<PathId> pathIds;  ///< the path's {id}s
    Identity identity;            ///< of the sender; only for routes that need a token

    /// The path's {id} number `index`, from 0, as an ID of the kind that the route is about.
    template <typename IdType>
    [[nodiscard]] IdType GetId(std::size_t index) const {
        return IdType(pathIds.at(index).GetText());
    }

    /// The header's value; nothing if it is absent. Throws ApiError 400 if it is repeated.
    [[nodiscard]] std::optional<std::string> Header(std::string_view name) const;

    /// The header's value as a non-negative number; the largest one on overflow. Throws ApiError
    /// 400 if it is not a number.
    [[nodiscard]] std::optional<std::int64_t> NumberHeader(std::string_view name) const;

    /// The header Idempotency-Key. Throws ApiError 400 if it is not a UUID.
    [[nodiscard]] std::optional<IdempotencyKey> GetIdempotencyKey() const;

    /// The token of the header Authorization with the scheme Bearer; empty if there is none.
    [[nodiscard]] std::string GetBearerToken() const;

    /// The body, up to 64 KiB; empty for routes with a sink.
    [[nodiscard]] std::string const& GetBody() const { return exchange->body; }

    /// The body as a JSON object. Throws ApiError 400 if it is not one.
    [[nodiscard]] nlohmann::json ReadJson() const;

    /// The member "name" of the body, a JSON object. Throws ApiError 400 if it is missing or
    /// invalid.
    [[nodiscard]] std::string ReadName() const;

    void Respond(int status, nlohmann::json const& body);

    /// Responds with an HTML page and its Content-Security-Policy.
    void RespondWithPage(int status, std::string const& html, std::string const& policy);

    /// Responds with an error: as JSON, or as a page if the client prefers HTML.
    void RespondWithError(int status, std::string_view code, std::string_view message);

    /// The ID of the request, and the pattern of its path, for the logs. The pattern's text must
    /// outlive the call.
    [[nodiscard]] std::string const& GetRequestId() const { return exchange->id; }
    void SetRoute(std::string_view pattern) { exchange->route = pattern; }

    /// The service's address as the client reaches it, "https://review.example"; without the public
    /// address, which may be empty, by the request's Host, and empty if there is none.
    [[nodiscard]] std::string GetOwnAddress() const;
    void SetOwnAddress(std::string_view publicAddress) { ownAddress = publicAddress; }

    /// Ends the client's connection; see http::Exchange::abort.
    [[nodiscard]] std::function<void()> const& GetAbort() const { return exchange->abort; }

private:
    std::string_view ownAddress;
    std::shared_ptr<http::Exchange> exchange;
};

}  // namespace quilloservice
