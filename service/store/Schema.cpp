#include "service/store/Schema.h"

#include <stdexcept>

#include "service/store/Database.h"

namespace quilloservice {

namespace {

constexpr int kVersion = 5;

// Every object of an account is a node, so that its existence, kind and account are found in one
// look-up. `parent` is the account of a workspace, the workspace of a project, the project of a
// root folder or review link, the folder of a folder or version stack, the folder or version stack
// of a file.
constexpr char const* kTables = R"sql(
CREATE TABLE users (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL
) WITHOUT ROWID;

CREATE TABLE memberships (
    user TEXT NOT NULL REFERENCES users (id),
    account TEXT NOT NULL REFERENCES nodes (id),
    PRIMARY KEY (user, account)
) WITHOUT ROWID;

CREATE TABLE nodes (
    seq INTEGER PRIMARY KEY,
    id TEXT NOT NULL UNIQUE,
    kind TEXT NOT NULL,
    account TEXT NOT NULL,
    parent TEXT,
    name TEXT NOT NULL,
    version INTEGER NOT NULL DEFAULT 1
);
CREATE INDEX nodes_by_parent ON nodes (parent, seq);

CREATE TABLE movies (
    asset TEXT PRIMARY KEY REFERENCES nodes (id),
    bytes INTEGER NOT NULL,
    sha256 TEXT NOT NULL,
    media_type TEXT NOT NULL,
    published_at INTEGER NOT NULL
) WITHOUT ROWID;

CREATE TABLE sessions (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user TEXT NOT NULL REFERENCES users (id),
    client TEXT NOT NULL
);

CREATE TABLE tokens (
    hash TEXT PRIMARY KEY,
    session INTEGER NOT NULL REFERENCES sessions (id) ON DELETE CASCADE,
    kind TEXT NOT NULL,
    expires_at INTEGER NOT NULL
) WITHOUT ROWID;
CREATE INDEX tokens_by_session ON tokens (session);
CREATE INDEX tokens_by_expiry ON tokens (expires_at);

CREATE TABLE uploads (
    id TEXT PRIMARY KEY,
    user TEXT NOT NULL REFERENCES users (id),
    asset TEXT NOT NULL,
    folder TEXT NOT NULL,
    stack TEXT,
    name TEXT NOT NULL,
    media_type TEXT NOT NULL,
    metadata TEXT NOT NULL,
    length INTEGER NOT NULL,
    confirmed INTEGER NOT NULL DEFAULT 0,
    published INTEGER NOT NULL DEFAULT 0,
    touched_at INTEGER NOT NULL
) WITHOUT ROWID;
CREATE INDEX open_uploads ON uploads (touched_at) WHERE published = 0;

CREATE TABLE idempotency_keys (
    user TEXT NOT NULL,
    key TEXT NOT NULL,
    request TEXT NOT NULL,
    result TEXT NOT NULL,
    PRIMARY KEY (user, key)
) WITHOUT ROWID;
CREATE INDEX idempotency_keys_by_result ON idempotency_keys (result);

CREATE TABLE link_assets (
    seq INTEGER PRIMARY KEY,
    link TEXT NOT NULL REFERENCES nodes (id),
    asset TEXT NOT NULL REFERENCES nodes (id),
    UNIQUE (link, asset)
);
)sql";

// The feed of changed lists. Numbers start at the current time in seconds, times 1,000,000, so that
// a number from an earlier store is never mistaken for one of this store. `audience` is the account
// whose members receive the change, or a single user.
constexpr char const* kChanges = R"sql(
CREATE TABLE changes (
    seq INTEGER PRIMARY KEY AUTOINCREMENT,
    list TEXT NOT NULL,
    parent TEXT,
    audience TEXT NOT NULL
);
INSERT INTO sqlite_sequence (name, seq)
    VALUES ('changes', CAST(strftime('%s', 'now') AS INTEGER) * 1000000);

PRAGMA user_version = 2;
)sql";

// The time of a key's first use, from which it expires. Existing keys count from the upgrade.
constexpr char const* kKeyTimes = R"sql(
ALTER TABLE idempotency_keys ADD COLUMN used_at INTEGER NOT NULL DEFAULT 0;
UPDATE idempotency_keys SET used_at = CAST(strftime('%s', 'now') AS INTEGER);
CREATE INDEX idempotency_keys_by_time ON idempotency_keys (used_at);

PRAGMA user_version = 3;
)sql";

// `parent`: the hash of the refresh token that was exchanged for this token. `used_at`: when a
// refresh token was first exchanged.
constexpr char const* kTokenUse = R"sql(
ALTER TABLE tokens ADD COLUMN parent TEXT;
ALTER TABLE tokens ADD COLUMN used_at INTEGER;
CREATE INDEX tokens_by_parent ON tokens (parent) WHERE parent IS NOT NULL;

PRAGMA user_version = 4;
)sql";

// Partial uploads. `kind`: see UploadKind. `file`, `place`: the upload whose file holds the bytes,
// and where they begin there. `whole`, `whole_length`: which movie a part belongs to. `parts`: the
// IDs of the parts of a joined upload, separated by blanks.
constexpr char const* kParts = R"sql(
ALTER TABLE uploads ADD COLUMN kind INTEGER NOT NULL DEFAULT 0;
ALTER TABLE uploads ADD COLUMN file TEXT NOT NULL DEFAULT '';
ALTER TABLE uploads ADD COLUMN place INTEGER NOT NULL DEFAULT 0;
ALTER TABLE uploads ADD COLUMN whole TEXT;
ALTER TABLE uploads ADD COLUMN whole_length INTEGER NOT NULL DEFAULT 0;
ALTER TABLE uploads ADD COLUMN parts TEXT;
UPDATE uploads SET file = id;
CREATE INDEX open_uploads_by_file ON uploads (file) WHERE published = 0;
CREATE INDEX open_uploads_by_whole ON uploads (whole) WHERE published = 0 AND whole IS NOT NULL;
CREATE INDEX joined_uploads ON uploads (parts) WHERE parts IS NOT NULL;

PRAGMA user_version = 5;
)sql";

}  // namespace

void MakeTables(Database& database) {
    std::int64_t version = 0;
    {
        Statement query = database.Query("PRAGMA user_version");
        if (query.Next()) version = query.Integer(0);
    }
    if (version > kVersion) {
        throw std::runtime_error("the data directory was written by a newer quillo-service");
    }
    if (version < 1) database.RunScript(kTables);
    if (version < 2) database.RunScript(kChanges);
    if (version < 3) database.RunScript(kKeyTimes);
    if (version < 4) database.RunScript(kTokenUse);
    if (version < 5) database.RunScript(kParts);
}

}  // namespace quilloservice
