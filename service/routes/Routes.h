#pragma once

#include <functional>
#include <optional>
#include <string>

#include "service/base/Clock.h"
#include "service/operations/Metrics.h"
#include "service/routes/FaultOptions.h"
#include "service/routes/RateLimiter.h"

namespace quilloservice {

class Api;
class AuthorizationCodes;
class DataDirectory;
class EventStreams;
class LocalUserSecret;
class Locations;
class ReviewLinks;
class Sessions;
class Store;
class Uploads;

// Each adds the routes of a section of docs/service-api.md. The arguments must outlive `api`.

/// `localUser`: the secret for the sign-in without a browser; null: there is no such sign-in.
void AddSignInRoutes(Api& api, Sessions& sessions, AuthorizationCodes& codes,
                     LocalUserSecret const* localUser, std::optional<RateLimit> limit);
void AddAuthorizeRoutes(Api& api, Store const& store, AuthorizationCodes& codes,
                        Clock const& clock);
void AddLocationRoutes(Api& api, Store const& store);
void AddLocationChangeRoutes(Api& api, Locations& locations);
void AddEventRoutes(Api& api, EventStreams& streams);
/// The start page and /admin.
void AddPageRoutes(Api& api);
void AddUploadRoutes(Api& api, Uploads& uploads, FaultOptions const& faults);
/// `address`: for the URLs of links if a request has no Host.
void AddLinkRoutes(Api& api, ReviewLinks& links, std::string const& address);
void AddReviewerRoutes(Api& api, ReviewLinks const& links, DataDirectory const& directory);
/// `gauges` is called for each scrape, on any thread; whether the store is reachable is added.
void AddOperationRoutes(Api& api, Store const& store, Metrics const& metrics,
                        std::function<Metrics::Gauges()> gauges);

}  // namespace quilloservice
