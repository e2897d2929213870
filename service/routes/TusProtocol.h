#pragma once

#include <string>

#include "service/routes/Call.h"

namespace quilloservice::tus {

/// What browsers' clients may send and read beyond what every page may (CORS).
extern char const* const kRequestHeaders;
extern char const* const kAnswerHeaders;

/// The method that the request is to be taken for: clients that cannot send PATCH or DELETE send
/// another one and name the method in a header.
std::string EffectiveMethod(Call const& call);

/// Says which version the answer speaks: every answer but the one to OPTIONS.
void SayVersion(Call& call);

/// Says what the service offers, in the answer to OPTIONS and to an unknown version.
void Describe(Call& call);

/// Throws ApiError 412 when the client speaks another version.
void RequireVersion(Call& call);

}  // namespace quilloservice::tus
