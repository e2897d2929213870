#include "service/uploads/Uploads.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <vector>

#include "service/base/ApiError.h"
#include "service/base/File.h"
#include "service/base/Text.h"
#include "service/base/Uuid.h"
#include "service/store/DataDirectory.h"
#include "service/store/Idempotency.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// Brings `progress` to `offset` by reading the file from its start, unless it is there already.
/// Needed after a restart and after a reverted append.
void CatchUp(LiveUploads::Progress& progress, File const& file, std::int64_t offset) {
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
      clock(clock),
      freeBytes(freeBytes ? std::move(freeBytes) : [&directory] { return directory.FreeBytes(); }),
      publisher(directory, store, changes, clock) {}

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
        LogFailure("delete upload " + id.GetText(), [&] { Delete(id, before); });
    }
}

void Uploads::Delete(UploadId const& id, std::int64_t before) {
    auto lease = live.TryAcquire(id);
    if (!lease) return;
    auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
    if (!upload || publisher.FinishInterrupted(*upload)) return;
    bool deleted =
        store.Write([&](Database& database) { return DeleteUpload(database, id, before); });
    if (!deleted) return;
    std::error_code missing;
    std::filesystem::remove(directory.UploadPath(id), missing);
}

UploadId Uploads::Create(UserId const& user, NewUpload const& request,
                         std::optional<IdempotencyKey> const& key) {
    DeleteOld();
    return store.Write([&](Database& database) {
        if (!key) return Insert(database, user, request);
        std::int64_t now = clock();
        IdempotentRequest repeatable{
            user, *key, "upload " + std::to_string(request.length) + " " + request.metadata};
        if (auto earlier = FindRepeated<UploadId>(database, repeatable, now)) return *earlier;
        UploadId id = Insert(database, user, request);
        RememberResult(database, repeatable, id, now);
        return id;
    });
}

UploadId Uploads::Insert(Database& database, UserId const& user, NewUpload const& request) {
    Node folder = RequireNode(database, user, request.folder);
    if (request.stack) Publisher::AdmitToStack(database, user, folder, *request.stack);
    if (freeBytes() - kReserveBytes - BytesOutstanding(database) < request.length) {
        throw ApiError::DoesNotFit();
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
    InsertUpload(database, upload, clock());
    return upload.id;
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

std::shared_ptr<UploadAppend> Uploads::BeginAppend(UserId const& user, UploadId const& id,
                                                   AppendRequest const& request,
                                                   std::function<void()> onOvertaken) {
    constexpr char const* kMoved = "The upload's offset has changed; HEAD reports it.";
    auto check = [&](UploadRecord const& upload) {
        if (request.offset != upload.confirmed) {
            throw ApiError::Conflict("The upload's offset is " + std::to_string(upload.confirmed) +
                                     ", not " + std::to_string(request.offset) + ".");
        }
        if (request.bodyLength.value_or(0) > upload.length - upload.confirmed) {
            throw ApiError::TooLarge("The body exceeds the upload's length.");
        }
    };
    // Also before Acquire, so that a refused request does not take the upload from another one.
    check(Get(user, id));
    LiveUploads::Lease lease = Acquire(id);
    UploadRecord upload = Get(user, id);
    check(upload);
    if (!upload.published && publisher.FinishInterrupted(upload)) throw ApiError::Conflict(kMoved);
    File file = upload.published ? File(directory.MoviePath(upload.asset), File::Mode::Read)
                                 : File(directory.UploadPath(upload.id), File::Mode::Write);
    if (!upload.published) {
        if (std::int64_t size = file.Size(); size < upload.confirmed) {
            // Confirmed bytes can be missing after a power failure, since they are not synced.
            store.Write([&](Database& database) { SetConfirmed(database, id, size, clock()); },
                        Store::Durability::Process);
            throw ApiError::Conflict(kMoved);
        }
        file.Truncate(upload.confirmed);
        CatchUp(lease.GetProgress(), file, upload.confirmed);
    }
    auto append = std::make_shared<UploadAppend>(UploadAppend::Parts{store, publisher, clock},
                                                 std::move(upload), std::move(lease),
                                                 std::move(file), request, std::move(onOvertaken));
    live.SetHolder(id, append);
    return append;
}

PublishedAsset Uploads::Asset(UserId const& user, UploadId const& id) const {
    return publisher.Find(Get(user, id));
}

}  // namespace quilloservice
