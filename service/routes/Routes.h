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
class Places;
class ReviewLinks;
class Sessions;
class Store;
class Uploads;

// Each adds the routes of one section of docs/service-api.md. What is passed outlives `api`.

/// `localUser`: of the user who is signed in without a browser; null: nobody is.
void AddSignInRoutes(Api& api, Sessions& sessions, AuthorizationCodes& codes,
                     const LocalUserSecret* localUser, std::optional<RateLimit> limit);
void AddAuthorizeRoutes(Api& api, const Store& store, AuthorizationCodes& codes,
                        const Clock& clock);
void AddLocationRoutes(Api& api, const Store& store);
void AddPlaceRoutes(Api& api, Places& places);
void AddEventRoutes(Api& api, EventStreams& streams);
/// The start page, and the one on which a developer changes places: for browsers on this machine.
void AddPageRoutes(Api& api);
void AddUploadRoutes(Api& api, Uploads& uploads, const FaultOptions& faults);
/// `address`: where links lead when a request does not say under which name it found the service.
void AddLinkRoutes(Api& api, ReviewLinks& links, const std::string& address);
void AddReviewerRoutes(Api& api, const ReviewLinks& links, const DataDirectory& directory);

}  // namespace quilloservice
