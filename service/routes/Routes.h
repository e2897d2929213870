#pragma once

#include <optional>
#include <string>

#include "service/base/Clock.h"
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

// Each adds the routes of one section of docs/service-api.md. What is passed outlives `api`.

/// `localUser`: of the user who is signed in without a browser; null: nobody is.
void AddSignInRoutes(Api& api, Sessions& sessions, AuthorizationCodes& codes,
                     LocalUserSecret const* localUser, std::optional<RateLimit> limit);
void AddAuthorizeRoutes(Api& api, Store const& store, AuthorizationCodes& codes,
                        Clock const& clock);
void AddLocationRoutes(Api& api, Store const& store);
void AddLocationChangeRoutes(Api& api, Locations& locations);
void AddEventRoutes(Api& api, EventStreams& streams);
/// The start page, and the one on which a developer changes locations: for browsers on this
/// machine.
void AddPageRoutes(Api& api);
void AddUploadRoutes(Api& api, Uploads& uploads, FaultOptions const& faults);
/// `address`: where links lead when a request does not say under which name it found the service.
void AddLinkRoutes(Api& api, ReviewLinks& links, std::string const& address);
void AddReviewerRoutes(Api& api, ReviewLinks const& links, DataDirectory const& directory);

}  // namespace quilloservice
