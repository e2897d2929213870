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
#include "service/routes/RateLimiter.h"

namespace quilloservice {

class Call;

/// The service's routes. Every request passes through here, and what holds for all of them is done
/// here once: no route under /v1 is reached without a token unless it says so, and no body is read
/// before; requests are counted; whatever a route throws becomes an error of the wire's form.
/// Routes are added before the server listens; after that any thread.
class Api : public http::Application {
public:
    using Handler = std::function<void(Call&)>;
    using Opener = std::function<std::unique_ptr<BodySink>(Call&)>;

    struct Route {
        std::string method;  ///< HEAD goes to GET where it has no route of its own
        /// "/v1/folders/{id}/children": an {id} matches UUIDs only, a {rest} at the end anything.
        /// Of several that match the one added first counts.
        std::string path;
        Handler handler{};
        std::optional<RequestKind> kind{};  ///< counted as this
        Opener sink{};                      ///< in place of `handler`: takes the body in pieces
    };

    /// What the service's operator decides about all routes.
    struct Settings {
        std::optional<RateLimit> limit;
        double failRate = 0;      ///< share of /v1 requests answered 500
        std::string allowOrigin;  ///< of pages that may use the interface; empty: none
    };

    Api(Sessions const& sessions, Settings settings);

    void Add(Route route);

    // http::Application
    http::Action Begin(std::shared_ptr<http::Exchange> exchange) override;
    void Refuse(http::Exchange& exchange, int status, std::string_view code,
                std::string_view message) override;

private:
    Route const& Admit(Call& call, std::string const& method);
    Route const* Match(std::string const& method, std::string const& path,
                       std::vector<std::string>& ids) const;
    [[nodiscard]] std::string AllowedMethods(std::string const& path) const;
    void AnswerOptions(Call& call) const;
    void AllowOrigin(Call& call) const;
    Identity Authorize(Call& call) const;

    Sessions const& sessions;
    RateLimiter limiter;
    double failRate;
    std::string allowedOrigin;
    std::vector<Route> routes;
};

}  // namespace quilloservice
