#include "quillohostkit/state/AssetStore.h"

#include <sqlite3.h>

#include <string_view>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

constexpr int kBusyMilliseconds = 10'000;

constexpr char const* kSchema = R"(
    BEGIN IMMEDIATE;
    CREATE TABLE IF NOT EXISTS library (
        only INTEGER PRIMARY KEY CHECK (only = 1), guid TEXT NOT NULL);
    CREATE TABLE IF NOT EXISTS movies (path BLOB PRIMARY KEY, guid TEXT NOT NULL);
    CREATE TABLE IF NOT EXISTS strings (
        service TEXT, library TEXT, movie TEXT, key TEXT, value TEXT NOT NULL,
        PRIMARY KEY (service, library, movie, key));
    CREATE TABLE IF NOT EXISTS default_destinations (
        service TEXT PRIMARY KEY, way TEXT NOT NULL, path TEXT NOT NULL);
    COMMIT;
)";

/// Tables of earlier versions, whose rows are strings now.
constexpr char const* kFormerTables = R"(
    BEGIN IMMEDIATE;
    CREATE TABLE IF NOT EXISTS ways (
        service TEXT, library TEXT, movie TEXT, way TEXT NOT NULL,
        PRIMARY KEY (service, library, movie));
    CREATE TABLE IF NOT EXISTS versions (
        service TEXT, version_stack TEXT, count INTEGER NOT NULL,
        PRIMARY KEY (service, version_stack));
    INSERT OR IGNORE INTO strings
        SELECT service, library, movie, 'quillohostkit.Location', way FROM ways;
    INSERT OR IGNORE INTO strings
        SELECT s.service, s.library, s.movie, 'quillohostkit.Versions',
               v.version_stack || ' ' || v.count
        FROM strings s JOIN versions v ON s.service = v.service AND s.value = v.version_stack
        WHERE s.key = 'KVRN.QuilloNative.ShareForReview.VersionStackGuid';
    DROP TABLE ways;
    DROP TABLE versions;
    COMMIT;
)";

[[noreturn]] void Fail(sqlite3* database, std::filesystem::path const& file) {
    throw Failure(FailureKind::Other,
                  Text("$$$/Vistrel/quillohostkit/State/Store=Cannot use the host's store "
                       "\"{file}\": {reason}; check its rights and the free space of its disk.",
                       {{"file", file.string()}, {"reason", sqlite3_errmsg(database)}}));
}

[[noreturn]] void Fail(sqlite3* database) {
    Fail(database, sqlite3_db_filename(database, "main"));
}

}  // namespace

void AssetStore::CloseDatabase::operator()(sqlite3* open) const {
    sqlite3_close(open);
}

/// One run of a statement, with its parameters in order.
class AssetStore::Statement {
public:
    template <class... Parameter>
    Statement(sqlite3* database, char const* text, Parameter const&... parameters)
        : database(database) {
        if (sqlite3_prepare_v2(database, text, -1, &statement, nullptr) != SQLITE_OK)
            Fail(database);
        int position = 0;
        (Bind(++position, parameters), ...);
    }
    ~Statement() { sqlite3_finalize(statement); }
    Statement(Statement const&) = delete;
    Statement& operator=(Statement const&) = delete;

    /// Goes to the next row of the result; false when there is none.
    bool Next() {
        int const result = sqlite3_step(statement);
        if (result != SQLITE_ROW && result != SQLITE_DONE) Fail(database);
        return result == SQLITE_ROW;
    }

    void Run() {
        while (Next()) {
        }
    }

    [[nodiscard]] std::string Text(int column = 0) const {
        auto const* const text =
            reinterpret_cast<char const*>(sqlite3_column_text(statement, column));
        return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    }

private:
    void Bind(int position, std::string const& text) {
        sqlite3_bind_text64(statement, position, text.data(), text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
    }
    void Bind(int position, moxcore::utility::Guid const& guid) {
        Bind(position, guid.AsStdString());
    }
    void Bind(int position, std::filesystem::path const& path) {
        sqlite3_bind_blob64(statement, position, path.native().data(), path.native().size(),
                            SQLITE_TRANSIENT);
    }

    sqlite3* database;
    sqlite3_stmt* statement = nullptr;
};

/// Statements that are carried out together: none of them unless it is committed.
class AssetStore::Transaction {
public:
    explicit Transaction(sqlite3* database) : database(database) {
        Statement(database, "BEGIN IMMEDIATE").Run();
    }
    ~Transaction() {
        if (!isCommitted) sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    Transaction(Transaction const&) = delete;
    Transaction& operator=(Transaction const&) = delete;

    void Commit() {
        Statement(database, "COMMIT").Run();
        isCommitted = true;
    }

private:
    sqlite3* database;
    bool isCommitted = false;
};

AssetStore::AssetStore(std::filesystem::path const& file, std::string newService)
    : service(std::move(newService)) {
    sqlite3* opened = nullptr;
    int const result =
        sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    database.reset(opened);
    sqlite3_busy_timeout(opened, kBusyMilliseconds);
    if (result != SQLITE_OK ||
        sqlite3_exec(opened, kSchema, nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail(opened, file);
    TakeOverFormerTables();
}

AssetStore::~AssetStore() = default;

void AssetStore::TakeOverFormerTables() {
    Statement found(database.get(), "SELECT 1 FROM sqlite_master WHERE name = 'ways'");
    if (!found.Next()) return;
    found.Run();
    if (sqlite3_exec(database.get(), kFormerTables, nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail(database.get());
}

std::optional<AssetID> AssetStore::FindAsset(std::filesystem::path const& path) {
    Statement found(database.get(),
                    "SELECT library.guid, movies.guid FROM library, movies WHERE path = ?", path);
    if (!found.Next()) return std::nullopt;
    return AssetID{moxcore::utility::Guid(found.Text(0)), moxcore::utility::Guid(found.Text(1))};
}

AssetID AssetStore::AssetOf(std::filesystem::path const& path) {
    std::lock_guard lock(mutex);
    // A popup that is opened waits for this: nothing is written, hence no disk awaited, for an
    // asset that is known, and a new one costs one commit.
    if (auto const known = FindAsset(path)) return *known;
    auto* const db = database.get();
    Transaction transaction(db);
    Statement(db, "INSERT INTO library VALUES (1, ?) ON CONFLICT DO NOTHING",
              moxcore::utility::Guid::CreateUnique())
        .Run();
    Statement(db, "INSERT INTO movies VALUES (?, ?) ON CONFLICT DO NOTHING", path,
              moxcore::utility::Guid::CreateUnique())
        .Run();
    transaction.Commit();
    auto const made = FindAsset(path);
    if (!made) Fail(db);
    return *made;
}

std::optional<std::string> AssetStore::Read(AssetID const& asset, std::string const& key) {
    std::lock_guard lock(mutex);
    Statement found(database.get(),
                    "SELECT value FROM strings WHERE service = ? AND library = ? AND movie = ? "
                    "AND key = ?",
                    service, asset.store, asset.asset, key);
    if (!found.Next()) return std::nullopt;
    return found.Text();
}

void AssetStore::Write(AssetID const& asset, std::string const& key, std::string const& value) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "INSERT INTO strings VALUES (?, ?, ?, ?, ?) "
              "ON CONFLICT DO UPDATE SET value = excluded.value",
              service, asset.store, asset.asset, key, value)
        .Run();
}

void AssetStore::Forget(AssetID const& asset, std::string const& key) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "DELETE FROM strings WHERE service = ? AND library = ? AND movie = ? AND key = ?",
              service, asset.store, asset.asset, key)
        .Run();
}

std::optional<ChosenLocation> AssetStore::ReadDefaultDestination() {
    std::lock_guard lock(mutex);
    Statement found(database.get(), "SELECT way, path FROM default_destinations WHERE service = ?",
                    service);
    if (!found.Next()) return std::nullopt;
    return ChosenLocation{IDPathFromText(found.Text(0)), found.Text(1)};
}

void AssetStore::WriteDefaultDestination(ChosenLocation const& location) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "INSERT INTO default_destinations VALUES (?, ?, ?) "
              "ON CONFLICT DO UPDATE SET way = excluded.way, path = excluded.path",
              service, TextOf(location.idPath), location.namePath)
        .Run();
}

void AssetStore::ForgetDefaultDestination() {
    std::lock_guard lock(mutex);
    Statement(database.get(), "DELETE FROM default_destinations WHERE service = ?", service).Run();
}

}  // namespace quillohostkit
