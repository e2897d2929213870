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

/// Makes `progress` stand for the file's first `offset` bytes, which are read if need be: after a
/// restart, or after a request that was taken back.
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

/// Does what can be left for later. What is in the way of one upload is to keep neither the others
/// nor the service waiting.
template <typename Work>
void Attempt(std::string const& what, Work&& work) {
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
    for (std::string const& id : store.Read([&](Database& database) {
             return UnfinishedUploads(database, std::numeric_limits<std::int64_t>::max());
         })) {
        auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
        if (!upload) continue;
        Attempt("finish upload " + id, [&] { publisher.FinishInterrupted(*upload); });
    }
    ForgetOld();
}

void Uploads::ForgetOld() {
    std::int64_t before = clock() - kForgetAfterSeconds;
    for (std::string const& id :
         store.Read([&](Database& database) { return UnfinishedUploads(database, before); })) {
        Attempt("forget upload " + id, [&] { Forget(id, before); });
    }
}

void Uploads::Forget(std::string const& id, std::int64_t before) {
    auto lease = live.TryAcquire(id);
    if (!lease) return;
    auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
    if (!upload || publisher.FinishInterrupted(*upload)) return;
    bool forgotten =
        store.Write([&](Database& database) { return ForgetUpload(database, id, before); });
    if (!forgotten) return;
    std::error_code missing;
    std::filesystem::remove(directory.UploadPath(id), missing);
}

std::string Uploads::Create(std::string const& user, NewUpload const& request,
                            std::optional<std::string> const& idempotencyKey) {
    ForgetOld();
    return store.Write([&](Database& database) {
        std::int64_t now = clock();
        IdempotentRequest repeatable{
            user, idempotencyKey.value_or(""),
            "upload " + std::to_string(request.length) + " " + request.metadata};
        if (idempotencyKey) {
            if (auto earlier = FindRepeated(database, repeatable, now)) return *earlier;
        }
        Node folder = RequireNode(database, user, request.folder, kind::Folder);
        if (request.stack) Publisher::AdmitToStack(database, user, folder, *request.stack);
        if (freeBytes() - kReserveBytes - BytesToCome(database) < request.length) {
            throw ApiError::DoesNotFit();
        }
        UploadRecord upload{.id = NewUuid(),
                            .user = user,
                            .asset = NewUuid(),
                            .folder = request.folder,
                            .stack = request.stack,
                            .name = request.name,
                            .mediaType = request.mediaType,
                            .metadata = request.metadata,
                            .length = request.length};
        InsertUpload(database, upload, now);
        if (idempotencyKey) RememberResult(database, repeatable, upload.id, now);
        return upload.id;
    });
}

UploadRecord Uploads::Get(std::string const& user, std::string const& id) const {
    auto upload = store.Read([&](Database& database) { return FindUpload(database, id); });
    if (!upload) throw ApiError::NotFound("No upload has this ID.");
    if (upload->user != user) throw ApiError::Forbidden("This upload is another user's.");
    return *std::move(upload);
}

LiveUploads::Lease Uploads::Acquire(std::string const& id) {
    if (auto lease = live.TryAcquire(id)) return *std::move(lease);
    if (auto holder = live.Holder(id); holder && holder->GiveWay()) {
        if (auto lease = live.TryAcquire(id)) return *std::move(lease);
    }
    throw ApiError::Conflict("Another request is completing this upload.");
}

std::shared_ptr<UploadAppend> Uploads::BeginAppend(std::string const& user, std::string const& id,
                                                   AppendRequest const& request,
                                                   std::function<void()> onOvertaken) {
    constexpr char const* moved = "The upload's offset is another one; ask HEAD for it.";
    auto check = [&](UploadRecord const& upload) {
        if (request.offset != upload.confirmed) {
            throw ApiError::Conflict("The upload's offset is " + std::to_string(upload.confirmed) +
                                     ", not " + std::to_string(request.offset) + ".");
        }
        if (request.bodyLength.value_or(0) > upload.length - upload.confirmed) {
            throw ApiError::TooLarge("The body goes past the upload's length.");
        }
    };
    // Before anything is taken over, too: a request that is refused disturbs no other.
    check(Get(user, id));
    LiveUploads::Lease lease = Acquire(id);
    UploadRecord upload = Get(user, id);
    check(upload);
    if (!upload.published && publisher.FinishInterrupted(upload)) throw ApiError::Conflict(moved);
    File file = upload.published ? File(directory.MoviePath(upload.asset), File::Mode::Read)
                                 : File(directory.UploadPath(upload.id), File::Mode::Write);
    if (!upload.published) {
        if (std::int64_t size = file.Size(); size < upload.confirmed) {
            // The machine went down before the system had written what was confirmed.
            store.Write([&](Database& database) { SetConfirmed(database, id, size, clock()); },
                        Store::Durability::Process);
            throw ApiError::Conflict(moved);
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

PublishedAsset Uploads::Asset(std::string const& user, std::string const& id) const {
    return publisher.Find(Get(user, id));
}

}  // namespace quilloservice
