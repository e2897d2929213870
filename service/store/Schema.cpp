#include "service/store/Schema.h"

#include <array>
#include <stdexcept>

namespace quilloservice {

namespace {

// Every object of an account is a node, so that its existence, kind and account are found in one
// look-up. `parent` is the account of a workspace, the workspace of a project, the project of a
// root folder or review link, the folder of a folder or version stack, the folder or version stack
// of a file.
constexpr char const* kTables = R"sql(
CREATE TABLE users (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL
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

CREATE TABLE memberships (
    user TEXT NOT NULL REFERENCES users (id),
    account TEXT NOT NULL REFERENCES nodes (id),
    PRIMARY KEY (user, account)
) WITHOUT ROWID;

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

// The feed of changed lists. `audience` is the account whose members receive the change, or a
// single user.
constexpr char const* kChanges = R"sql(
CREATE TABLE changes (
    seq INTEGER PRIMARY KEY AUTOINCREMENT,
    list TEXT NOT NULL,
    parent TEXT,
    audience TEXT NOT NULL
);
)sql";

// The time of a key's first use, from which it expires. Existing keys count from the upgrade.
constexpr char const* kKeyTimes = R"sql(
ALTER TABLE idempotency_keys ADD COLUMN used_at INTEGER NOT NULL DEFAULT 0;
UPDATE idempotency_keys SET used_at = CAST(strftime('%s', 'now') AS INTEGER);
CREATE INDEX idempotency_keys_by_time ON idempotency_keys (used_at);
)sql";

// `parent`: the hash of the refresh token that was exchanged for this token. `used_at`: when a
// refresh token was first exchanged.
constexpr char const* kTokenUse = R"sql(
ALTER TABLE tokens ADD COLUMN parent TEXT;
ALTER TABLE tokens ADD COLUMN used_at INTEGER;
CREATE INDEX tokens_by_parent ON tokens (parent) WHERE parent IS NOT NULL;
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
)sql";

constexpr std::array kSteps = {SchemaStep{1, kTables}, SchemaStep{2, kChanges, true},
                               SchemaStep{3, kKeyTimes}, SchemaStep{4, kTokenUse},
                               SchemaStep{5, kParts}};

}  // namespace

std::span<SchemaStep const> SchemaStepsAfter(std::int64_t version) {
    if (version > kSteps.back().version) {
        throw std::runtime_error("a newer quillo-service wrote the store");
    }
    return std::span(kSteps).subspan(static_cast<std::size_t>(version));
}

}  // namespace quilloservice
