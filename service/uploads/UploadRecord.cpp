#include "service/uploads/UploadRecord.h"

#include <algorithm>

#include "service/store/Database.h"

namespace quilloservice {

namespace {

constexpr char const* kColumns =
    "SELECT id, user, asset, folder, stack, name, media_type, metadata, length, confirmed, "
    "published, kind, file, place, whole, whole_length, parts FROM uploads ";

std::string Join(std::vector<UploadId> const& ids) {
    std::string text;
    for (UploadId const& id : ids)
        text += (text.empty() ? "" : " ") + id.GetText();
    return text;
}

std::vector<UploadId> Split(std::string_view text) {
    std::vector<UploadId> ids;
    while (!text.empty()) {
        std::size_t blank = std::min(text.find(' '), text.size());
        ids.emplace_back(std::string(text.substr(0, blank)));
        text.remove_prefix(std::min(blank + 1, text.size()));
    }
    return ids;
}

UploadRecord ReadRow(Statement const& row) {
    return UploadRecord{.id = row.Id<UploadId>(0),
                        .user = row.Id<UserId>(1),
                        .asset = row.Id<FileId>(2),
                        .folder = row.Id<FolderId>(3),
                        .stack = row.OptionalId<StackId>(4),
                        .name = row.Text(5),
                        .mediaType = row.Text(6),
                        .metadata = row.Text(7),
                        .length = row.Integer(8),
                        .confirmed = row.Integer(9),
                        .published = row.Integer(10) != 0,
                        .kind = static_cast<UploadKind>(row.Integer(11)),
                        .file = row.Id<UploadId>(12),
                        .place = row.Integer(13),
                        .whole = row.OptionalId<WholeId>(14),
                        .wholeLength = row.Integer(15),
                        .parts = Split(row.Text(16))};
}

std::vector<UploadRecord> ReadAll(Statement& rows) {
    std::vector<UploadRecord> uploads;
    while (rows.Next())
        uploads.push_back(ReadRow(rows));
    return uploads;
}

}  // namespace

std::optional<UploadRecord> FindUpload(Database& database, UploadId const& id) {
    Statement row = database.Query(kColumns + std::string("WHERE id = ?"), id);
    if (!row.Next()) return std::nullopt;
    return ReadRow(row);
}

std::optional<UploadId> FindJoined(Database& database, UserId const& user,
                                   std::vector<UploadId> const& parts) {
    Statement row =
        database.Query("SELECT id FROM uploads WHERE parts = ? AND user = ?", Join(parts), user);
    return row.Next() ? std::optional(row.Id<UploadId>(0)) : std::nullopt;
}

std::vector<UploadRecord> PartsOf(Database& database, UserId const& user, WholeId const& whole) {
    Statement rows = database.Query(
        kColumns + std::string("WHERE whole = ? AND user = ? AND published = 0 AND kind = 1 "
                               "ORDER BY place"),
        whole, user);
    return ReadAll(rows);
}

std::vector<UploadRecord> UploadsIn(Database& database, UploadId const& file) {
    Statement rows = database.Query(
        kColumns + std::string("WHERE file = ? AND published = 0 AND kind <> 2 ORDER BY place"),
        file);
    return ReadAll(rows);
}

void InsertUpload(Database& database, UploadRecord const& upload, std::int64_t now) {
    std::optional<std::string> parts;
    if (upload.kind == UploadKind::Joined) parts = Join(upload.parts);
    database.Run(
        "INSERT INTO uploads (id, user, asset, folder, stack, name, media_type, metadata, "
        "length, touched_at, kind, file, place, whole, whole_length, parts) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        upload.id, upload.user, upload.asset, upload.folder, upload.stack, upload.name,
        upload.mediaType, upload.metadata, upload.length, now, upload.kind, upload.file,
        upload.place, upload.whole, upload.wholeLength, parts);
}

void SetConfirmed(Database& database, UploadId const& id, std::int64_t confirmed,
                  std::int64_t now) {
    database.Run("UPDATE uploads SET confirmed = ?, touched_at = ? WHERE id = ? AND published = 0",
                 confirmed, now, id);
}

std::int64_t ConfirmedFront(Database& database, UploadId const& file) {
    Statement row = database.Query(
        "SELECT place, confirmed FROM uploads "
        "WHERE file = ? AND published = 0 AND kind <> 2 ORDER BY place",
        file);
    std::int64_t front = 0;
    while (row.Next() && row.Integer(0) == front)
        front += row.Integer(1);
    return front;
}

std::int64_t BytesOutstanding(Database& database) {
    Statement sum = database.Query(
        "SELECT (SELECT coalesce(sum(length - confirmed), 0) FROM uploads "
        "        WHERE published = 0 AND kind <> 2) + "
        "       (SELECT coalesce(sum(missing), 0) FROM "
        "        (SELECT max(whole_length) - sum(length) AS missing FROM uploads "
        "         WHERE published = 0 AND kind = 1 AND whole IS NOT NULL GROUP BY file) AS files)");
    sum.Next();
    return sum.Integer(0);
}

std::vector<UploadId> UnfinishedUploads(Database& database, std::int64_t before) {
    Statement row = database.Query(
        "SELECT id FROM uploads WHERE published = 0 AND touched_at < ?1 AND "
        "(SELECT max(touched_at) FROM uploads AS other "
        " WHERE other.file = uploads.file AND other.published = 0) < ?1",
        before);
    std::vector<UploadId> ids;
    while (row.Next())
        ids.push_back(row.Id<UploadId>(0));
    return ids;
}

bool DeleteUpload(Database& database, UploadId const& id, std::int64_t before) {
    int deleted = database.Run(
        "DELETE FROM uploads WHERE id = ?1 AND published = 0 AND "
        "(SELECT max(touched_at) FROM uploads AS other "
        " WHERE other.file = uploads.file AND other.published = 0) < ?2",
        id, before);
    if (deleted == 0) return false;
    database.Run("DELETE FROM idempotency_keys WHERE result = ?", id);
    return true;
}

}  // namespace quilloservice
