#include "service/uploads/Uploads.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <vector>

#include "service/base/ApiError.h"
#include "service/base/File.h"
#include "service/base/Uuid.h"
#include "service/store/DataDirectory.h"
#include "service/store/Idempotency.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// Runs `work` and logs its exception: a problem with one upload must not block the others or the
/// service's start.
template <typename Work>
void LogFailure(std::string const& what, Work&& work) {
    try {
        work();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quillo-service: cannot %s yet: %s\n", what.c_str(), error.what());
    }
}

}  // namespace

Uploads::Uploads(DataDirectory const& directory, Store& store, ChangeFeed& changes, Clock clock,
                 FreeBytes freeBytes)
    : directory(directory),
      store(store),
      clock(std::move(clock)),
      freeBytes(freeBytes ? std::move(freeBytes) : [&directory] { return directory.FreeBytes(); }),
      publisher(directory, store, changes, this->clock),
      hashes(directory) {}

void Uploads::Recover() {
    for (UploadId const& id : store.Read([&](Database& database) {
             return UnfinishedUploads(database, std::numeric_limits<std::int64_t>::max());
         })) {
        auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
        if (!upload) continue;
        LogFailure("finish upload " + id.GetText(), [&] { publisher.FinishInterrupted(*upload); });
    }
    DeleteOld();
}

void Uploads::DeleteOld() {
    std::int64_t before = clock() - kExpireAfterSeconds;
    for (UploadId const& id :
         store.Read([&](Database& database) { return UnfinishedUploads(database, before); })) {
        LogFailure("delete upload " + id.GetText(), [&] { DeleteIdle(id, before); });
    }
}

void Uploads::DeleteIdle(UploadId const& id, std::int64_t before) {
    auto lease = live.TryAcquire(id);
    if (!lease) return;
    auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
    if (upload && !publisher.FinishInterrupted(*upload)) DeleteLeased(*upload, before);
}

void Uploads::Delete(UserId const& user, UploadId const& id) {
    UploadRecord upload = Get(user, id);
    LiveUploads::Lease lease = Acquire(id);
    upload = Get(user, id);
    if (upload.published || publisher.FinishInterrupted(upload)) {
        throw ApiError::Forbidden("The movie is published, and published movies stay.");
    }
    DeleteLeased(upload, std::numeric_limits<std::int64_t>::max());
}

bool Uploads::DeleteLeased(UploadRecord const& upload, std::int64_t before) {
    bool deleted =
        store.Write([&](Database& database) { return DeleteUpload(database, upload.id, before); });
    if (!deleted) return false;
    // Other bytes may come in the place of a part that is gone.
    hashes.Drop(upload.file);
    bool inUse =
        store.Read([&](Database& database) { return !UploadsIn(database, upload.file).empty(); });
    std::error_code missing;
    if (!inUse) std::filesystem::remove(directory.UploadPath(upload.file), missing);
    return true;
}

UploadId Uploads::Create(UserId const& user, NewUpload const& request,
                         std::optional<IdempotencyKey> const& key) {
    DeleteOld();
    auto create = [&](Database& database) {
        if (!key) return Insert(database, user, request);
        std::int64_t now = clock();
        IdempotentRequest repeatable{user, *key,
                                     (request.isPart ? "part " : "upload ") +
                                         std::to_string(request.length) + " " + request.metadata};
        if (auto earlier = FindRepeated<UploadId>(database, repeatable, now)) return *earlier;
        UploadId id = Insert(database, user, request);
        RememberResult(database, repeatable, id, now);
        return id;
    };
    // A client creates a part that is lost anew; syncing each would hold up the bytes of the
    // others.
    return store.Write(create,
                       request.isPart ? Store::Durability::Process : Store::Durability::Disk);
}

UploadId Uploads::Insert(Database& database, UserId const& user, NewUpload const& request) {
    if (request.namesFolder) {
        Node folder = RequireNode(database, user, request.folder);
        if (request.stack) Publisher::AdmitToStack(database, user, folder, *request.stack);
    }
    UploadRecord upload{.id = UploadId(NewUuid()),
                        .user = user,
                        .asset = FileId(NewUuid()),
                        .folder = request.folder,
                        .stack = request.stack,
                        .name = request.name,
                        .mediaType = request.mediaType,
                        .metadata = request.metadata,
                        .length = request.length};
    upload.file = upload.id;
    if (request.isPart) upload.kind = UploadKind::Part;
    if (request.place) {
        upload.place = request.place->offset;
        upload.whole = request.place->whole;
        upload.wholeLength = request.place->wholeLength;
        return InsertPart(database, std::move(upload));
    }
    CheckRoom(database, request.length);
    InsertUpload(database, upload, clock());
    return upload.id;
}

/// Inserts a part that has a place in a movie.
UploadId Uploads::InsertPart(Database& database, UploadRecord part) {
    std::vector<UploadRecord> others = PartsOf(database, part.user, *part.whole);
    if (others.empty()) {
        CheckRoom(database, part.wholeLength);
    } else {
        part.file = others.front().file;
    }
    for (UploadRecord const& other : others) {
        bool apart =
            part.place + part.length <= other.place || other.place + other.length <= part.place;
        if (!apart || other.wholeLength != part.wholeLength) {
            throw ApiError::Conflict(
                "Another part of this movie has the same bytes, or names another length.");
        }
    }
    InsertUpload(database, part, clock());
    return part.id;
}

void Uploads::CheckRoom(Database& database, std::int64_t bytes) const {
    if (freeBytes() - kReserveBytes - BytesOutstanding(database) < bytes) {
        throw ApiError::DoesNotFit();
    }
}

UploadRecord Uploads::Get(UserId const& user, UploadId const& id) const {
    auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
    if (!upload) throw ApiError::NotFound("No upload has this ID.");
    if (upload->user != user) throw ApiError::Forbidden("This upload is another user's.");
    return *std::move(upload);
}

LiveUploads::Lease Uploads::Acquire(UploadId const& id) {
    if (auto lease = live.TryAcquire(id)) return *std::move(lease);
    if (auto holder = live.Holder(id); holder && holder->GiveWay()) {
        if (auto lease = live.TryAcquire(id)) return *std::move(lease);
    }
    throw ApiError::Conflict("Another request is completing this upload.");
}

/// At the first use of a file since the start: lowers the offsets of uploads whose bytes did not
/// reach the disk before a power failure, since they are not synced.
void Uploads::CheckStored(UploadId const& id) {
    if (hashes.Knows(id)) return;
    hashes.Follow(id, [&] {
        std::optional<File> file = File::OpenExisting(directory.UploadPath(id));
        return store.Write(
            [&](Database& database) {
                for (UploadRecord const& upload : UploadsIn(database, id)) {
                    std::int64_t end = upload.place + upload.confirmed;
                    std::int64_t stored = file ? file->FirstHole(upload.place, end) : upload.place;
                    if (stored >= end) continue;
                    SetConfirmed(database, upload.id, stored - upload.place, clock());
                }
                return ConfirmedFront(database, id);
            },
            Store::Durability::Process);
    });
}

std::shared_ptr<UploadAppend> Uploads::BeginAppend(UserId const& user, UploadId const& id,
                                                   AppendRequest const& request,
                                                   std::function<void()> onOvertaken) {
    auto check = [&](UploadRecord const& upload) {
        if (upload.kind == UploadKind::Joined) {
            throw ApiError::Forbidden("A movie that is joined from parts takes no bytes itself.");
        }
        if (request.offset != upload.confirmed) {
            throw ApiError::Conflict("The upload's offset is " + std::to_string(upload.confirmed) +
                                     ", not " + std::to_string(request.offset) + ".");
        }
        if (request.bodyLength.value_or(0) > upload.length - upload.confirmed) {
            throw ApiError::TooLarge("The body exceeds the upload's length.");
        }
    };
    // Also before Acquire, so that a refused request does not take the upload from another one.
    UploadRecord upload = Get(user, id);
    check(upload);
    LiveUploads::Lease lease = Acquire(id);
    if (!upload.published && publisher.FinishInterrupted(Get(user, id))) {
        throw ApiError::Conflict("The upload's offset has changed; HEAD reports it.");
    }
    if (!upload.IsComplete()) CheckStored(upload.file);
    upload = Get(user, id);
    check(upload);
    std::optional<File> file;
    if (!upload.IsComplete()) {
        file.emplace(directory.UploadPath(upload.file), File::Mode::Write);
        if (upload.OwnsFile()) file->Truncate(upload.confirmed);
    }
    auto append = std::make_shared<UploadAppend>(
        UploadAppend::Parts{store, publisher, hashes, clock}, std::move(upload), std::move(lease),
        std::move(file), request, std::move(onOvertaken));
    live.SetHolder(id, append);
    return append;
}

PublishedAsset Uploads::Asset(UserId const& user, UploadId const& id) const {
    return publisher.Find(Get(user, id));
}

}  // namespace quilloservice
