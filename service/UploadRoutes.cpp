#include <httplib.h>

#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>

#include "service/Api.h"
#include "service/ApiError.h"
#include "service/Call.h"
#include "service/Connection.h"
#include "service/HttpServer.h"
#include "service/Routes.h"
#include "service/Text.h"
#include "service/UploadMetadata.h"
#include "service/Uploads.h"

namespace quilloservice {

using nlohmann::json;

namespace {

constexpr const char* kTusVersion = "1.0.0";

/// Cuts each upload's connection once, for tests of clients: in the middle of a body, or, when the
/// place to cut lies at or past the upload's end, in place of the last answer. Any thread.
class DropFault {
public:
    DropFault(const Uploads& uploads, std::optional<std::int64_t> afterBytes)
        : uploads_(uploads), afterBytes_(afterBytes) {}

    /// Runs `append` with the body that the service gets to see of `body`, which begins at `start`.
    std::int64_t Around(const Call& call, std::int64_t start, const BodyReader& body,
                        const std::function<std::int64_t(const BodyReader&)>& append) {
        if (!afterBytes_) return append(body);
        const std::string& upload = call.ids[0];
        std::int64_t length = uploads_.Get(call.identity.user, upload).length;
        if (*afterBytes_ < length) return AppendCut(upload, start, body, append);
        std::int64_t offset = append(body);
        if (offset == length && Strikes(upload)) HttpServer::ThisConnection().Cut();
        return offset;
    }

private:
    std::int64_t AppendCut(const std::string& upload, std::int64_t start, const BodyReader& body,
                           const std::function<std::int64_t(const BodyReader&)>& append) {
        bool struck = false;
        std::int64_t total = start;
        BodyReader cutBody = [&](const auto& take) {
            return body([&](std::string_view bytes) {
                std::int64_t room = *afterBytes_ - total;
                total += static_cast<std::int64_t>(bytes.size());
                if (room <= 0 || total < *afterBytes_ || !Strikes(upload)) return take(bytes);
                struck = true;
                take(bytes.substr(0, static_cast<std::size_t>(room)));
                return false;
            });
        };
        try {
            return append(cutBody);
        } catch (...) {
            // Only now, so that the client finds what was kept when it comes back.
            if (struck) HttpServer::ThisConnection().Cut();
            throw;
        }
    }

    bool Strikes(const std::string& upload) {
        std::scoped_lock lock(mutex_);
        return struck_.insert(upload).second;
    }

    const Uploads& uploads_;
    std::optional<std::int64_t> afterBytes_;
    std::mutex mutex_;
    std::set<std::string> struck_;  // mutex_
};

void TellProtocol(Call& call) {
    call.response.set_header("Tus-Version", kTusVersion);
    call.response.set_header("Tus-Extension", "creation,checksum");
    call.response.set_header("Tus-Checksum-Algorithm", "sha1,sha256,xxh128");
    call.response.set_header("Tus-Max-Size", std::to_string(Uploads::kMaxBytes));
}

/// `answer` for clients that speak the protocol's version only.
Api::Handler InProtocol(Api::Handler answer) {
    return [answer = std::move(answer)](Call& call) {
        call.response.set_header("Tus-Resumable", kTusVersion);
        if (call.Header("Tus-Resumable") != kTusVersion) {
            TellProtocol(call);
            throw ApiError(412, "protocol_version", "Tus-Resumable has to be 1.0.0.");
        }
        answer(call);
    };
}

std::int64_t RequiredNumber(const Call& call, const std::string& header) {
    auto number = call.NumberHeader(header);
    if (!number) throw ApiError::BadRequest("The header " + header + " is missing.");
    return *number;
}

std::optional<AppendRequest::Checksum> ReadChecksum(const Call& call) {
    auto header = call.Header("Upload-Checksum");
    if (!header) return std::nullopt;
    std::size_t space = std::min(header->find(' '), header->size());
    std::string algorithm = header->substr(0, space);
    auto value = FromBase64(std::string_view(*header).substr(std::min(space + 1, header->size())));
    for (auto [name, known, size] : {std::tuple("sha1", Digest::Algorithm::Sha1, 20u),
                                     std::tuple("sha256", Digest::Algorithm::Sha256, 32u),
                                     std::tuple("xxh128", Digest::Algorithm::Xxh128, 16u)}) {
        if (algorithm == name && value && value->size() == size) {
            return AppendRequest::Checksum{known, *value};
        }
    }
    throw ApiError::BadRequest(
        "Upload-Checksum has to be sha1, sha256 or xxh128, a blank, and the checksum in base64.");
}

std::optional<std::string> ReadContentSha256(const Call& call) {
    auto hex = call.Header("Quillo-Content-SHA256");
    if (hex &&
        (hex->size() != 64 || hex->find_first_not_of("0123456789abcdef") != std::string::npos)) {
        throw ApiError::BadRequest("Quillo-Content-SHA256 has to be 64 lower-case hex digits.");
    }
    return hex;
}

void Create(Call& call, Uploads& uploads) {
    if (call.Header("Upload-Defer-Length")) {
        throw ApiError::BadRequest("The length has to be known: deferred lengths are not taken.");
    }
    std::int64_t length = RequiredNumber(call, "Upload-Length");
    if (length == 0) throw ApiError::BadRequest("An empty movie cannot be uploaded.");
    if (length > Uploads::kMaxBytes) {
        throw ApiError::TooLarge("The service takes movies of up to " +
                                 std::to_string(Uploads::kMaxBytes) + " bytes.");
    }
    NewUpload upload = ReadUploadMetadata(call.Header("Upload-Metadata").value_or(""), length);
    std::string id = uploads.Create(call.identity.user, upload, call.UuidHeader("Idempotency-Key"));
    call.response.status = 201;
    call.response.set_header("Location", "/v1/uploads/" + id);
}

void Head(Call& call, const Uploads& uploads) {
    call.response.set_header("Cache-Control", "no-store");
    UploadRecord upload = uploads.Get(call.identity.user, call.ids[0]);
    call.response.status = 200;
    call.response.set_header("Upload-Offset", std::to_string(upload.confirmed));
    call.response.set_header("Upload-Length", std::to_string(upload.length));
    call.response.set_header("Upload-Metadata", upload.metadata);
}

void Append(Call& call, Uploads& uploads, DropFault& fault) {
    if (call.Header("Content-Type") != "application/offset+octet-stream") {
        throw ApiError(415, "unsupported_media_type",
                       "Content-Type has to be application/offset+octet-stream.");
    }
    AppendRequest request{.offset = RequiredNumber(call, "Upload-Offset"),
                          .checksum = ReadChecksum(call),
                          .contentSha256 = ReadContentSha256(call)};
    if (!call.Header("Transfer-Encoding")) request.bodyLength = call.NumberHeader("Content-Length");
    BodyReader wholeBody = [&](const auto& take) { return call.ReadBody(take); };
    std::int64_t offset =
        fault.Around(call, request.offset, wholeBody, [&](const BodyReader& body) {
            return uploads.Append(call.identity.user, call.ids[0], request, body);
        });
    call.response.status = 204;
    call.response.set_header("Upload-Offset", std::to_string(offset));
}

void Asset(Call& call, const Uploads& uploads) {
    PublishedAsset asset = uploads.Asset(call.identity.user, call.ids[0]);
    call.Answer(200, {{"asset", {{"id", asset.id}, {"name", asset.name}, {"type", "file"}}},
                      {"version", asset.version},
                      {"version_stack_id", asset.stack ? json(*asset.stack) : json()},
                      {"folder_id", asset.folder},
                      {"sha256", asset.sha256},
                      {"bytes", asset.bytes}});
}

}  // namespace

void AddUploadRoutes(Api& api, Uploads& uploads, const FaultOptions& faults) {
    auto fault = std::make_shared<DropFault>(uploads, faults.dropUploadAfterBytes);
    api.Add({.method = "OPTIONS",
             .path = "/v1/uploads",
             .handler =
                 [](Call& call) {
                     TellProtocol(call);
                     call.response.status = 204;
                 },
             .open = true});
    api.Add({"POST", "/v1/uploads", InProtocol([&](Call& call) { Create(call, uploads); }),
             RequestKind::Uploads});
    api.Add({"HEAD", "/v1/uploads/{id}", InProtocol([&](Call& call) { Head(call, uploads); })});
    api.Add({"PATCH", "/v1/uploads/{id}",
             InProtocol([&uploads, fault](Call& call) { Append(call, uploads, *fault); })});
    api.Add({"GET", "/v1/uploads/{id}/asset", [&](Call& call) { Asset(call, uploads); }});
}

}  // namespace quilloservice
