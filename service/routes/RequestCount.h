#pragma once

#include "service/routes/RateLimiter.h"
#include "service/store/Ids.h"

namespace quilloservice {

class Call;

/// Counts the request against the limit of `requester` and `kind`, and sets the rate limit headers
/// of the response. Throws ApiError 429 if the limit is exceeded.
void CountRequest(Call& call, RateLimiter& limiter, Requester requester, RequestKind kind);

Requester RequesterOf(SessionId session);

/// The client's address as the requester, for requests before the sign-in. All addresses of an IPv6
/// network (/64) are one requester, since one client can use any of them.
Requester RequesterAt(Call const& call);

}  // namespace quilloservice
