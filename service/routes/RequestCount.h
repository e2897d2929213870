#pragma once

#include <cstdint>

#include "service/routes/RateLimiter.h"

namespace quilloservice {

class Call;

/// Counts the request as one of `kind` of `who`, and says the limit in the answer's headers. Throws
/// ApiError 429 past it.
void CountRequest(Call& call, RateLimiter& limiter, std::int64_t who, RequestKind kind);

/// Stands for the client's address where requests are counted before anybody has signed in. An IPv6
/// client has all addresses of a network (/64), which count as one.
std::int64_t AddressKey(Call const& call);

}  // namespace quilloservice
