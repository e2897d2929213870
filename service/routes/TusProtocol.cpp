#include "service/routes/TusProtocol.h"

#include "service/base/ApiError.h"
#include "service/uploads/Uploads.h"

namespace quilloservice::tus {

namespace {

constexpr char const* kVersion = "1.0.0";

}  // namespace

char const* const kRequestHeaders =
    "Authorization, Content-Type, Idempotency-Key, Last-Event-ID, Quillo-Content-SHA256, "
    "Tus-Resumable, Upload-Checksum, Upload-Concat, Upload-Length, Upload-Metadata, Upload-Offset, "
    "X-HTTP-Method-Override, X-Requested-With";
char const* const kResponseHeaders =
    "Location, Quillo-Asset, Retry-After, Tus-Checksum-Algorithm, Tus-Extension, Tus-Max-Size, "
    "Tus-Resumable, "
    "Tus-Version, Upload-Concat, Upload-Length, Upload-Metadata, Upload-Offset, X-RATELIMIT-LIMIT, "
    "X-RATELIMIT-WINDOW";

std::string EffectiveMethod(Call const& call) {
    return call.Header("X-HTTP-Method-Override").value_or(call.request.method);
}

void SetVersion(Call& call) {
    call.response.SetHeader("Tus-Resumable", kVersion);
}

void Describe(Call& call) {
    call.response.SetHeader("Tus-Version", kVersion);
    call.response.SetHeader("Tus-Extension", "creation,checksum,concatenation,termination");
    call.response.SetHeader("Tus-Checksum-Algorithm", "sha1,sha256,xxh128");
    call.response.SetHeader("Tus-Max-Size", std::to_string(Uploads::kMaxBytes));
}

void RequireVersion(Call& call) {
    if (call.Header("Tus-Resumable") == kVersion) return;
    Describe(call);
    throw ApiError(412, "protocol_version", "Tus-Resumable has to be 1.0.0.");
}

}  // namespace quilloservice::tus
