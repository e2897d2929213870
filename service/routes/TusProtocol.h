#pragma once

#include <string>

#include "service/routes/Call.h"

namespace quilloservice::tus {

/// The request headers that pages may send and the response headers that they may read (CORS).
extern char const* const kRequestHeaders;
extern char const* const kResponseHeaders;

/// The request's method, from the header X-HTTP-Method-Override if it is given.
std::string EffectiveMethod(Call const& call);

/// Sets the header Tus-Resumable, for all responses except to OPTIONS.
void SetVersion(Call& call);

/// Sets the headers that describe the server, for the response to OPTIONS and to a wrong version.
void Describe(Call& call);

/// Throws ApiError 412 unless the client uses the supported version.
void RequireVersion(Call& call);

}  // namespace quilloservice::tus
