#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <unordered_set>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/Routes.h"
#include "service/routes/TusProtocol.h"
#include "service/uploads/UploadAppend.h"
#include "service/uploads/UploadMetadata.h"
#include "service/uploads/Uploads.h"

namespace quilloservice {

using nlohmann::json;

namespace {

/// The fault --drop-upload-after: cuts the connection of each upload once. Any thread.
class DropFault {
public:
    explicit DropFault(std::optional<std::int64_t> afterBytes) : afterBytes(afterBytes) {}

    /// How many of `size` bytes at `offset` arrive before the cut; nothing: there is no cut in
    /// them.
    std::optional<std::size_t> CutWithin(UploadRecord const& upload, std::int64_t offset,
                                         std::size_t size) {
        if (!afterBytes || *afterBytes >= upload.length) return std::nullopt;
        std::int64_t room = *afterBytes - offset;
        if (room <= 0 || room > static_cast<std::int64_t>(size) || !Triggers(upload.id)) {
            return std::nullopt;
        }
        return static_cast<std::size_t>(room);
    }

    /// Whether the last response is dropped instead, because the cut is at or after the upload's
    /// end.
    bool CutsLastResponse(UploadRecord const& upload) {
        return afterBytes && *afterBytes >= upload.length && Triggers(upload.id);
    }

private:
    bool Triggers(UploadId const& upload) {
        std::scoped_lock lock(mutex);
        return triggered.insert(upload).second;
    }

    std::optional<std::int64_t> afterBytes;
    std::mutex mutex;
    std::unordered_set<UploadId> triggered;  // mutex
};

/// `handler`, after a check of the protocol's version.
Api::Handler WithVersionCheck(Api::Handler handler) {
    return [handler = std::move(handler)](Call& call) {
        tus::RequireVersion(call);
        handler(call);
    };
}

std::int64_t RequiredNumber(Call const& call, std::string const& header) {
    auto number = call.NumberHeader(header);
    if (!number) throw ApiError::BadRequest("The header " + header + " is missing.");
    return *number;
}

std::optional<AppendRequest::Checksum> ReadChecksum(Call const& call) {
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

std::optional<std::string> ReadContentSha256(Call const& call) {
    auto hex = call.Header("Quillo-Content-SHA256");
    if (hex &&
        (hex->size() != 64 || hex->find_first_not_of("0123456789abcdef") != std::string::npos)) {
        throw ApiError::BadRequest("Quillo-Content-SHA256 has to be 64 lower-case hex digits.");
    }
    return hex;
}

json AssetJson(PublishedAsset const& asset) {
    return {{"asset", {{"id", asset.id}, {"name", asset.name}, {"type", "file"}}},
            {"version", asset.version},
            {"version_stack_id", asset.stack ? json(*asset.stack) : json()},
            {"folder_id", asset.folder},
            {"sha256", asset.sha256},
            {"bytes", asset.bytes}};
}

std::string AddressOf(UploadId const& id) {
    return "/v1/uploads/" + id.GetText();
}

/// Makes one movie of partial uploads. The response says what it has become.
void Join(Call& call, Uploads& uploads, std::string const& concat) {
    if (call.Header("Upload-Length")) {
        throw ApiError::BadRequest("The length of a joined movie is that of its parts.");
    }
    UserId const& user = call.identity.user;
    NewUpload movie = ReadUploadMetadata(call.Header("Upload-Metadata").value_or(""), 0);
    UploadId id = uploads.Join(user, movie, ReadConcat(concat), ReadContentSha256(call));
    call.Respond(201, AssetJson(uploads.Asset(user, id)));
    call.response.SetHeader("Location", AddressOf(id));
}

void Create(Call& call, Uploads& uploads) {
    std::string concat = call.Header("Upload-Concat").value_or("");
    bool isPart = concat == "partial";
    if (!isPart && !concat.empty()) return Join(call, uploads, concat);
    if (call.Header("Upload-Defer-Length")) {
        throw ApiError::BadRequest("The length has to be known: deferred lengths are not taken.");
    }
    std::int64_t length = RequiredNumber(call, "Upload-Length");
    if (length == 0) throw ApiError::BadRequest("An empty movie cannot be uploaded.");
    if (length > Uploads::kMaxBytes) {
        throw ApiError::TooLarge("The service takes movies of up to " +
                                 std::to_string(Uploads::kMaxBytes) + " bytes.");
    }
    std::string metadata = call.Header("Upload-Metadata").value_or("");
    UploadId id = uploads.Create(
        call.identity.user,
        isPart ? ReadPartMetadata(metadata, length) : ReadUploadMetadata(metadata, length),
        call.GetIdempotencyKey());
    call.response.status = 201;
    call.response.SetHeader("Location", AddressOf(id));
}

void Head(Call& call, Uploads const& uploads) {
    UploadRecord upload = uploads.Get(call.identity.user, call.GetId<UploadId>(0));
    call.response.SetHeader("Cache-Control", "no-store");
    call.response.status = 200;
    call.response.SetHeader("Upload-Length", std::to_string(upload.length));
    call.response.SetHeader("Upload-Metadata", upload.metadata);
    if (upload.kind != UploadKind::Joined || upload.published) {
        call.response.SetHeader("Upload-Offset", std::to_string(upload.confirmed));
    }
    if (upload.kind == UploadKind::Part) call.response.SetHeader("Upload-Concat", "partial");
    if (upload.kind == UploadKind::Joined) {
        std::string concat = "final;";
        for (UploadId const& part : upload.parts)
            concat += (concat.ends_with(';') ? "" : " ") + AddressOf(part);
        call.response.SetHeader("Upload-Concat", concat);
    }
}

void Delete(Call& call, Uploads& uploads) {
    uploads.Delete(call.identity.user, call.GetId<UploadId>(0));
    call.response.status = 204;
}

/// Appends the body of a PATCH to its upload.
class AppendSink : public BodySink {
public:
    AppendSink(Call& call, Uploads& uploads, DropFault& fault)
        : call(call),
          uploads(uploads),
          fault(fault),
          request{.offset = RequiredNumber(call, "Upload-Offset"),
                  .bodyLength = call.request.bodyLength,
                  .checksum = ReadChecksum(call),
                  .contentSha256 = ReadContentSha256(call)} {}

    void Open() override {
        append = uploads.BeginAppend(call.identity.user, call.GetId<UploadId>(0), request,
                                     call.GetAbort());
        offset = request.offset;
    }

    void Take(std::string_view piece) override {
        if (auto seen = fault.CutWithin(append->GetUpload(), offset, piece.size())) {
            // Like a connection that breaks: the part before the cut is kept or reverted before the
            // client notices.
            call.response.cut = true;
            append->Take(piece.substr(0, *seen));
            append->Finish(false);
        }
        append->Take(piece);
        offset += static_cast<std::int64_t>(piece.size());
    }

    void Finish(bool complete) override {
        std::int64_t end = append->Finish(complete);
        call.response.status = 204;
        call.response.SetHeader("Upload-Offset", std::to_string(end));
        UploadRecord const& upload = append->GetUpload();
        if (end < upload.length) return;
        if (upload.kind == UploadKind::Movie) {
            // Saves the client a round trip. Its characters beyond ASCII are escaped.
            json asset = AssetJson(uploads.Asset(call.identity.user, upload.id));
            call.response.SetHeader("Quillo-Asset", asset.dump(-1, ' ', true));
        }
        if (fault.CutsLastResponse(upload)) call.response.cut = true;
    }

private:
    Call& call;
    Uploads& uploads;
    DropFault& fault;
    AppendRequest request;
    std::shared_ptr<UploadAppend> append;
    std::int64_t offset = 0;
};

std::unique_ptr<BodySink> OpenAppend(Call& call, Uploads& uploads, DropFault& fault) {
    tus::RequireVersion(call);
    if (call.Header("Content-Type") != "application/offset+octet-stream") {
        throw ApiError(415, "unsupported_media_type",
                       "Content-Type has to be application/offset+octet-stream.");
    }
    return std::make_unique<AppendSink>(call, uploads, fault);
}

void Asset(Call& call, Uploads const& uploads) {
    call.Respond(200, AssetJson(uploads.Asset(call.identity.user, call.GetId<UploadId>(0))));
}

}  // namespace

void AddUploadRoutes(Api& api, Uploads& uploads, FaultOptions const& faults) {
    auto fault = std::make_shared<DropFault>(faults.dropUploadAfterBytes);
    api.Add({"POST", "/v1/uploads", WithVersionCheck([&](Call& call) { Create(call, uploads); }),
             RequestKind::Uploads});
    api.Add(
        {"HEAD", "/v1/uploads/{id}", WithVersionCheck([&](Call& call) { Head(call, uploads); })});
    api.Add({.method = "PATCH", .path = "/v1/uploads/{id}", .sink = [&uploads, fault](Call& call) {
                 return OpenAppend(call, uploads, *fault);
             }});
    api.Add({"DELETE", "/v1/uploads/{id}",
             WithVersionCheck([&](Call& call) { Delete(call, uploads); })});
    api.Add({"GET", "/v1/uploads/{id}/asset", [&](Call& call) { Asset(call, uploads); }});
}

}  // namespace quilloservice
