// The part of Uploads that makes one movie of several parts.

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "service/base/ApiError.h"
#include "service/base/File.h"
#include "service/base/Text.h"
#include "service/base/Uuid.h"
#include "service/store/DataDirectory.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"
#include "service/uploads/Uploads.h"

namespace quilloservice {

namespace {

void RequireComplete(UploadRecord const& part) {
    if (part.IsComplete()) return;
    throw ApiError::Conflict("Bytes of the partial upload " + part.id.GetText() +
                             " are missing; HEAD reports its offset.");
}

UploadRecord RequirePart(Database& database, UserId const& user, UploadId const& id) {
    auto part = FindUpload(database, id);
    if (!part) throw ApiError::NotFound("No upload has the ID " + id.GetText() + ".");
    if (part->user != user) throw ApiError::Forbidden("This upload is another user's.");
    if (part->kind != UploadKind::Part) {
        throw ApiError::BadRequest("The upload " + id.GetText() + " is no partial one.");
    }
    RequireComplete(*part);
    return *std::move(part);
}

/// Whether the parts make up their whole in this order, so that their file is the movie.
bool FillTheirFile(std::vector<UploadRecord> const& parts) {
    std::int64_t end = 0;
    for (UploadRecord const& part : parts) {
        if (!part.whole || part.file != parts.front().file || part.place != end) return false;
        end += part.length;
    }
    return end == parts.front().wholeLength;
}

}  // namespace

UploadId Uploads::Join(UserId const& user, NewUpload const& movie,
                       std::vector<UploadId> const& parts,
                       std::optional<std::string> const& contentSha256) {
    UploadId id = store.Write([&](Database& database) {
        if (auto earlier = FindJoined(database, user, parts)) return *earlier;
        return InsertJoined(database, user, movie, parts);
    });
    LiveUploads::Lease lease = Acquire(id);
    UploadRecord upload = Get(user, id);
    if (!upload.published && !publisher.FinishInterrupted(upload)) {
        PublishJoined(upload, contentSha256);
    }
    return id;
}

UploadId Uploads::InsertJoined(Database& database, UserId const& user, NewUpload const& movie,
                               std::vector<UploadId> const& ids) {
    std::vector<UploadRecord> parts;
    for (UploadId const& id : ids)
        parts.push_back(RequirePart(database, user, id));
    if (parts.empty() || std::set(ids.begin(), ids.end()).size() != ids.size()) {
        throw ApiError::BadRequest("Upload-Concat has to name each partial upload once.");
    }
    Node folder = RequireNode(database, user, movie.folder);
    if (movie.stack) Publisher::AdmitToStack(database, user, folder, *movie.stack);
    UploadRecord upload{.id = UploadId(NewUuid()),
                        .user = user,
                        .asset = FileId(NewUuid()),
                        .folder = movie.folder,
                        .stack = movie.stack,
                        .name = movie.name,
                        .mediaType = movie.mediaType,
                        .metadata = movie.metadata,
                        .kind = UploadKind::Joined,
                        .parts = ids};
    for (UploadRecord const& part : parts)
        upload.length += part.length;
    if (FillTheirFile(parts)) {
        upload.file = parts.front().file;
    } else {
        CheckRoom(database, upload.length);
        upload.file = upload.id;
    }
    InsertUpload(database, upload, clock());
    return upload.id;
}

void Uploads::PublishJoined(UploadRecord const& upload,
                            std::optional<std::string> const& contentSha256) {
    bool copied = upload.file == upload.id;
    if (copied) {
        CopyParts(upload);
    } else {
        CheckStored(upload.file);
        store.Read([&](Database& database) {
            for (UploadId const& id : upload.parts)
                RequirePart(database, upload.user, id);
        });
    }
    Digest whole = hashes.Finish(upload.file, upload.length);
    if (contentSha256 && *contentSha256 != ToHex(whole.Value())) {
        DeleteLeased(upload, std::numeric_limits<std::int64_t>::max());
        for (UploadId const& part : upload.parts)
            DeleteIdle(part, std::numeric_limits<std::int64_t>::max());
        throw ApiError::ChecksumMismatch(
            "The movie does not match its checksum; its parts are deleted.");
    }
    hashes.Drop(upload.file);
    File file(directory.UploadPath(upload.file), File::Mode::Write);
    publisher.Publish(upload, file, whole);
}

void Uploads::CopyParts(UploadRecord const& upload) {
    hashes.Drop(upload.file);
    File joined(directory.UploadPath(upload.file), File::Mode::Write);
    joined.Truncate(0);
    std::int64_t end = 0;
    for (UploadId const& id : upload.parts) {
        UploadRecord part =
            store.Read([&](Database& database) { return RequirePart(database, upload.user, id); });
        CheckStored(part.file);
        RequireComplete(Get(upload.user, id));
        File const source(directory.UploadPath(part.file), File::Mode::Read);
        joined.CopyFrom(source, part.place, part.length, end);
        end += part.length;
    }
}

}  // namespace quilloservice
