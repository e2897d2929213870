#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/http/Exchange.h"
#include "service/oauth/Sessions.h"
#include "service/routes/BodySink.h"
#include "service/routes/Call.h"
#include "service/routes/RateLimiter.h"

namespace quilloservice {

/// The service's router. For every request it checks the token (under /v1, before the body is
/// read), counts the request against the rate limit, calls the route, and turns its exceptions into
/// error responses. Add the routes before the server listens; after that any thread.
class Api : public http::Application {
public:
    using Handler = std::function<void(Call&)>;
    using Opener = std::function<std::unique_ptr<BodySink>(Call&)>;

    struct Route {
        std::string method;  ///< a GET route also takes HEAD, unless HEAD has a route
        /// "/v1/folders/{id}/children": {id} matches a UUID, {rest} at the end anything. If several
        /// routes match, the first one added is called.
        std::string path;
        Handler handler{};
        std::optional<RequestKind> kind{};  ///< for the rate limit; nothing: not counted
        Opener sink{};                      ///< instead of `handler`: takes the body in pieces
    };

    /// Options of the command line that concern all routes.
    struct Settings {
        std::optional<RateLimit> limit;
        double failRate = 0;          ///< share of /v1 requests that fail with 500, for tests
        std::string allowOrigin;      ///< origin of pages that may use the API (CORS); empty: none
        std::string publicAddress{};  ///< as in Options
        std::string proxy{};          ///< as in Options
        bool isStoreRemote = false;   ///< reading from the store may take long
        /// Called with each exchange that has ended, on any thread; must not block.
        std::function<void(http::Exchange const&, http::Outcome const&)> onEnded{};
    };

    Api(Sessions const& sessions, Settings settings);

    void Add(Route route);

    // http::Application
    http::Action Begin(std::shared_ptr<http::Exchange> exchange) override;
    void Refuse(http::Exchange& exchange, int status, std::string_view code,
                std::string_view message) override;
    void Ended(http::Exchange const& exchange, http::Outcome const& outcome) override;

private:
    Route const& Admit(Call& call, std::string const& method);
    Route const* Match(std::string const& method, std::string const& path,
                       std::vector<PathId>& ids) const;
    [[nodiscard]] std::string AllowedMethods(std::string const& path) const;
    void RespondToOptions(Call& call) const;
    void AllowOrigin(Call& call) const;
    Identity Authorize(Call& call) const;

    Sessions const& sessions;
    Settings const settings;
    RateLimiter limiter;
    std::vector<Route> routes;
};

}  // namespace quilloservice
