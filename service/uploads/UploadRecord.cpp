#include "service/uploads/UploadRecord.h"

#include "service/store/Database.h"

namespace quilloservice {

std::optional<UploadRecord> FindUpload(Database& database, UploadId const& id) {
    Statement row = database.Query(
        "SELECT id, user, asset, folder, stack, name, media_type, metadata, length, confirmed, "
        "published FROM uploads WHERE id = ?",
        id);
    if (!row.Next()) return std::nullopt;
    return UploadRecord{.id = id,
                        .user = row.Id<UserId>(1),
                        .asset = row.Id<FileId>(2),
                        .folder = row.Id<FolderId>(3),
                        .stack = row.OptionalId<StackId>(4),
                        .name = row.Text(5),
                        .mediaType = row.Text(6),
                        .metadata = row.Text(7),
                        .length = row.Integer(8),
                        .confirmed = row.Integer(9),
                        .published = row.Integer(10) != 0};
}

void InsertUpload(Database& database, UploadRecord const& upload, std::int64_t now) {
    database.Run(
        "INSERT INTO uploads (id, user, asset, folder, stack, name, media_type, metadata, "
        "length, touched_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        upload.id, upload.user, upload.asset, upload.folder, upload.stack, upload.name,
        upload.mediaType, upload.metadata, upload.length, now);
}

void SetConfirmed(Database& database, UploadId const& id, std::int64_t confirmed,
                  std::int64_t now) {
    database.Run("UPDATE uploads SET confirmed = ?, touched_at = ? WHERE id = ? AND published = 0",
                 confirmed, now, id);
}

std::int64_t BytesOutstanding(Database& database) {
    Statement sum = database.Query(
        "SELECT coalesce(sum(length - confirmed), 0) FROM uploads WHERE published = 0");
    sum.Next();
    return sum.Integer(0);
}

std::vector<UploadId> UnfinishedUploads(Database& database, std::int64_t before) {
    Statement row =
        database.Query("SELECT id FROM uploads WHERE published = 0 AND touched_at < ?", before);
    std::vector<UploadId> ids;
    while (row.Next())
        ids.push_back(row.Id<UploadId>(0));
    return ids;
}

bool DeleteUpload(Database& database, UploadId const& id, std::int64_t before) {
    int deleted = database.Run(
        "DELETE FROM uploads WHERE id = ? AND published = 0 AND touched_at < ?", id, before);
    if (deleted == 0) return false;
    database.Run("DELETE FROM idempotency_keys WHERE result = ?", id);
    return true;
}

}  // namespace quilloservice
