#include "service/Uploads.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <vector>

#include "service/ApiError.h"
#include "service/BodyWriter.h"
#include "service/DataDirectory.h"
#include "service/File.h"
#include "service/Idempotency.h"
#include "service/Nodes.h"
#include "service/Store.h"
#include "service/Text.h"
#include "service/Uuid.h"

namespace quilloservice {

namespace {

// How much of an upload without checksums a killed service asks for again, at most.
constexpr std::int64_t kConfirmEveryBytes = 8 << 20;

/// Makes `progress` stand for the file's first `offset` bytes, which are read if need be: after a
/// restart, or after a request that was taken back.
void CatchUp(LiveUploads::Progress& progress, const File& file, std::int64_t offset) {
    if (progress.offset == offset) return;
    progress = {};
    std::vector<char> buffer(1 << 18);
    while (progress.offset < offset) {
        auto wanted = std::min<std::int64_t>(offset - progress.offset,
                                             static_cast<std::int64_t>(buffer.size()));
        std::size_t count =
            file.ReadAt(progress.offset, buffer.data(), static_cast<std::size_t>(wanted));
        if (count == 0) throw std::runtime_error("an upload's file became shorter");
        progress.digest.Update({buffer.data(), count});
        progress.offset += static_cast<std::int64_t>(count);
    }
}

}  // namespace

Uploads::Uploads(const DataDirectory& directory, Store& store, ChangeFeed& changes, Clock clock)
    : directory_(directory),
      store_(store),
      clock_(clock),
      publisher_(directory, store, changes, clock) {}

void Uploads::Recover() {
    for (const std::string& id : store_.Read([&](Database& database) {
             return UnfinishedUploads(database, std::numeric_limits<std::int64_t>::max());
         })) {
        auto upload = store_.Read([&](Database& database) { return FindUpload(database, id); });
        if (upload) publisher_.FinishInterrupted(*upload);
    }
    ForgetOld();
}

void Uploads::ForgetOld() {
    std::int64_t before = clock_() - kForgetAfterSeconds;
    for (const std::string& id :
         store_.Read([&](Database& database) { return UnfinishedUploads(database, before); })) {
        auto lease = live_.TryAcquire(id);
        if (!lease) continue;
        bool forgotten =
            store_.Write([&](Database& database) { return ForgetUpload(database, id, before); });
        if (!forgotten) continue;
        std::error_code missing;
        std::filesystem::remove(directory_.UploadPath(id), missing);
    }
}

std::string Uploads::Create(const std::string& user, const NewUpload& request,
                            const std::optional<std::string>& idempotencyKey) {
    ForgetOld();
    return store_.Write([&](Database& database) {
        IdempotentRequest repeatable{
            user, idempotencyKey.value_or(""),
            "upload " + std::to_string(request.length) + " " + request.metadata};
        if (idempotencyKey) {
            if (auto earlier = FindRepeated(database, repeatable)) return *earlier;
        }
        RequireNode(database, user, request.folder, kind::Folder);
        if (request.stack) Publisher::CheckStack(database, user, *request.stack);
        UploadRecord upload{.id = NewUuid(),
                            .user = user,
                            .asset = NewUuid(),
                            .folder = request.folder,
                            .stack = request.stack,
                            .name = request.name,
                            .mediaType = request.mediaType,
                            .metadata = request.metadata,
                            .length = request.length};
        InsertUpload(database, upload, clock_());
        if (idempotencyKey) RememberResult(database, repeatable, upload.id);
        return upload.id;
    });
}

UploadRecord Uploads::Get(const std::string& user, const std::string& id) const {
    auto upload = store_.Read([&](Database& database) { return FindUpload(database, id); });
    if (!upload) throw ApiError::NotFound("No upload has this ID.");
    if (upload->user != user) throw ApiError::Forbidden("This upload is another user's.");
    return *std::move(upload);
}

std::int64_t Uploads::Append(const std::string& user, const std::string& id,
                             const AppendRequest& request, const BodyReader& body) {
    auto live = live_.TryAcquire(id);
    if (!live) throw ApiError::Conflict("Another request is appending to this upload.");
    UploadRecord upload = Get(user, id);
    if (request.offset != upload.confirmed) {
        throw ApiError::Conflict("The upload's offset is " + std::to_string(upload.confirmed) +
                                 ", not " + std::to_string(request.offset) + ".");
    }
    if (request.bodyLength.value_or(0) > upload.length - upload.confirmed) {
        throw ApiError::TooLarge("The body goes past the upload's length.");
    }
    if (upload.published) return upload.length;
    return AppendTo(upload, *live, request, body);
}

std::int64_t Uploads::AppendTo(const UploadRecord& upload, LiveUploads::Lease& live,
                               const AppendRequest& request, const BodyReader& body) {
    constexpr const char* moved = "The upload's offset is another one; ask HEAD for it.";
    if (publisher_.FinishInterrupted(upload)) throw ApiError::Conflict(moved);
    File file(directory_.UploadPath(upload.id), File::Mode::Write);
    std::int64_t start = upload.confirmed;
    if (std::int64_t size = file.Size(); size < start) {
        // The machine went down before the system had written what was confirmed.
        Confirm(upload.id, size);
        throw ApiError::Conflict(moved);
    }
    file.Truncate(start);
    LiveUploads::Progress& progress = live.progress();
    CatchUp(progress, file, start);
    LiveUploads::Progress before = progress;

    std::optional<Digest::Algorithm> bodyAlgorithm;
    if (request.checksum) bodyAlgorithm = request.checksum->algorithm;
    BodyWriter writer(file, progress.digest, start, upload.length, bodyAlgorithm);
    std::int64_t confirmed = start;
    if (!request.checksum) {
        writer.onWritten = [&](std::int64_t end) {
            if (end - confirmed < kConfirmEveryBytes || end == upload.length) return;
            Confirm(upload.id, end);
            confirmed = end;
        };
    }

    bool complete = false;
    std::exception_ptr failure;
    try {
        complete = body([&](std::string_view bytes) {
            writer.Take(bytes);
            return true;
        });
        writer.Flush();
        if (!complete) throw ApiError::BadRequest("The connection ended before the body did.");
        if (request.checksum && writer.BodyChecksum() != request.checksum->value) {
            throw ApiError::ChecksumMismatch(
                "The body arrived with another checksum than the one announced; send it again.");
        }
    } catch (const ApiError&) {
        failure = std::current_exception();
    }

    std::int64_t end = writer.end();
    if (failure && (request.checksum || writer.overrun())) {
        file.Truncate(start);
        progress = std::move(before);
        end = start;
    } else {
        progress.offset = end;
    }
    if (end != confirmed && end < upload.length) Confirm(upload.id, end);
    live.Keep();
    if (failure) std::rethrow_exception(failure);
    if (end == upload.length) Complete(upload, file, live, request);
    return end;
}

void Uploads::Complete(const UploadRecord& upload, File& file, LiveUploads::Lease& live,
                       const AppendRequest& request) {
    live.Forget();
    const Digest& whole = live.progress().digest;
    if (request.contentSha256 && *request.contentSha256 != ToHex(whole.Value())) {
        file.Truncate(0);
        Confirm(upload.id, 0);
        throw ApiError::ChecksumMismatch(
            "The movie was stored with another checksum than the one announced; the upload starts "
            "again from offset 0.");
    }
    publisher_.Publish(upload, file, whole);
}

void Uploads::Confirm(const std::string& id, std::int64_t offset) {
    store_.Write([&](Database& database) { SetConfirmed(database, id, offset, clock_()); },
                 Store::Durability::Process);
}

PublishedAsset Uploads::Asset(const std::string& user, const std::string& id) const {
    return publisher_.Find(Get(user, id));
}

}  // namespace quilloservice
