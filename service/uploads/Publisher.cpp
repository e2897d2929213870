#include "service/uploads/Publisher.h"

#include <cstdio>
#include <filesystem>
#include <vector>

#include "service/base/ApiError.h"
#include "service/base/Digest.h"
#include "service/base/File.h"
#include "service/base/Text.h"
#include "service/store/ChangeFeed.h"
#include "service/store/DataDirectory.h"
#include "service/store/Nodes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// Throws ApiError 403 or 409 if `user` may not add a version to `stack`, which need not exist.
void CheckStack(Database& database, UserId const& user, StackId const& stack) {
    std::optional<Node> node = FindNode(database, stack);
    if (!node) return;
    RequireMember(database, user, *node);
    if (node->kind != kind::kVersionStack) {
        throw ApiError::Conflict("version_stack_id is not the ID of a version stack.");
    }
}

void MoveStack(Database& database, Node const& stack, Node const& folder) {
    if (auto former = FindNode(database, *stack.parent)) {
        ChangeFeed::RecordChildren(database, *former);
    }
    database.Run("UPDATE nodes SET parent = ?, account = ? WHERE id = ?", folder.id, folder.account,
                 stack.id);
    database.Run("UPDATE nodes SET account = ? WHERE parent = ?", folder.account, stack.id);
}

/// Creates the upload's stack if it is missing, moves it to the upload's folder, and returns the
/// number of its next version.
std::int64_t EnterStack(Database& database, UploadRecord const& upload, Node const& folder) {
    StackId const& id = *upload.stack;
    std::optional<Node> stack = FindNode(database, id);
    if (!stack) {
        InsertNode(database,
                   {id, std::string(kind::kVersionStack), folder.account, folder.id, upload.name});
        return 1;
    }
    if (stack->parent != folder.id) MoveStack(database, *stack, folder);
    Statement newest =
        database.Query("SELECT coalesce(max(version), 0) FROM nodes WHERE parent = ?", id);
    newest.Next();
    return newest.Integer(0) + 1;
}

}  // namespace

Publisher::Publisher(DataDirectory const& directory, Store& store, ChangeFeed& changes, Clock clock)
    : directory(directory), store(store), changes(changes), clock(std::move(clock)) {}

void Publisher::AdmitToStack(Database& database, UserId const& user, Node const& folder,
                             StackId const& stack) {
    CheckStack(database, user, stack);
    // Any of these may create the stack, or move it to its own folder, before the others complete.
    Statement other = database.Query(
        "SELECT user, account FROM uploads JOIN nodes ON nodes.id = folder "
        "WHERE stack = ? AND published = 0",
        stack);
    while (other.Next()) {
        if (!IsMember(database, user, other.Id<AccountId>(1))) {
            throw ApiError::Forbidden(
                "This version stack is reserved by an upload into an account of which the user is "
                "no member.");
        }
        if (!IsMember(database, other.Id<UserId>(0), folder.account)) {
            throw ApiError::Conflict(
                "This version stack is reserved by the upload of a user who is no member of the "
                "folder's account; wait for its end, or choose another folder.");
        }
    }
}

void Publisher::Publish(UploadRecord const& upload, File& file, Digest const& whole) {
    store.Read([&](Database& database) {
        if (upload.stack) CheckStack(database, upload.user, *upload.stack);
    });
    file.Sync();
    std::filesystem::rename(directory.UploadPath(upload.file), directory.MoviePath(upload.asset));
    SyncDirectory(directory.GetMoviesPath());
    Record(upload, whole);
}

bool Publisher::FinishInterrupted(UploadRecord const& upload) {
    std::optional<File> movie = File::OpenExisting(directory.MoviePath(upload.asset));
    if (!movie) return false;
    if (std::int64_t size = movie->Size(); size != upload.length) {
        SetAside(upload,
                 "it has " + std::to_string(size) + " bytes, not " + std::to_string(upload.length));
        return true;
    }
    Digest whole;
    std::vector<char> buffer(1 << 18);
    for (std::int64_t offset = 0;;) {
        std::size_t count = movie->ReadAt(offset, buffer.data(), buffer.size());
        if (count == 0) break;
        whole.Update({buffer.data(), count});
        offset += static_cast<std::int64_t>(count);
    }
    try {
        Record(upload, whole);
    } catch (ApiError const& refusal) {
        SetAside(upload, refusal.what());
    }
    return true;
}

void Publisher::SetAside(UploadRecord const& upload, std::string const& reason) {
    std::string kept = directory.SetMovieAside(upload.asset);
    store.Write([&](Database& database) {
        DeleteUpload(database, upload.id);
        for (UploadId const& part : upload.parts)
            DeleteUpload(database, part);
    });
    RemoveFilesOf(upload.parts);
    std::fprintf(stderr,
                 "quillo-service: the movie of upload %s cannot be published and is kept as %s: "
                 "%s\n",
                 upload.id.GetText().c_str(), kept.c_str(), reason.c_str());
}

void Publisher::Record(UploadRecord const& upload, Digest const& whole) {
    std::string sha256 = ToHex(whole.Value());
    store.Write([&](Database& database) {
        if (upload.stack) CheckStack(database, upload.user, *upload.stack);
        Node folder = RequireNode(database, upload.user, upload.folder);
        Node file{upload.asset, std::string(kind::kFile), folder.account, folder.id, upload.name};
        if (upload.stack) {
            file.version = EnterStack(database, upload, folder);
            file.parent = upload.stack;
        }
        InsertNode(database, file);
        database.Run(
            "INSERT INTO movies (asset, bytes, sha256, media_type, published_at) "
            "VALUES (?, ?, ?, ?, ?)",
            upload.asset, upload.length, sha256, upload.mediaType, clock());
        database.Run("UPDATE uploads SET published = 1, confirmed = length WHERE id = ?",
                     upload.id);
        for (UploadId const& part : upload.parts)
            DeleteUpload(database, part);
        ChangeFeed::RecordChildren(database, folder);
    });
    changes.Announce();
    RemoveFilesOf(upload.parts);
}

/// The movie has the bytes of these parts. A file that other parts are in as well stays.
void Publisher::RemoveFilesOf(std::vector<UploadId> const& parts) {
    for (UploadId const& part : parts) {
        bool inUse =
            store.Read([&](Database& database) { return !UploadsIn(database, part).empty(); });
        std::error_code missing;
        if (!inUse) std::filesystem::remove(directory.UploadPath(part), missing);
    }
}

PublishedAsset Publisher::Find(UploadRecord const& upload) const {
    return store.Read([&](Database& database) {
        Statement row = database.Query(
            "SELECT file.id, file.name, file.version, coalesce(stack.parent, file.parent), "
            "       sha256, bytes "
            "FROM nodes AS file JOIN movies ON asset = file.id "
            "LEFT JOIN nodes AS stack ON stack.id = file.parent AND stack.kind = ? "
            "WHERE file.id = ?",
            kind::kVersionStack, upload.asset);
        if (!row.Next()) throw ApiError::Conflict("The upload is not complete.");
        return PublishedAsset{row.Id<FileId>(0),   row.Text(1), row.Integer(2), upload.stack,
                              row.Id<FolderId>(3), row.Text(4), row.Integer(5)};
    });
}

}  // namespace quilloservice
