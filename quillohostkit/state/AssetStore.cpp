#include "quillohostkit/state/AssetStore.h"

#include <sqlite3.h>

#include <sstream>
#include <string_view>

#include "quillohostkit/process/Failure.h"

namespace quillohostkit {
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
    CREATE TABLE IF NOT EXISTS ways (
        service TEXT, library TEXT, movie TEXT, way TEXT NOT NULL,
        PRIMARY KEY (service, library, movie));
    CREATE TABLE IF NOT EXISTS default_destinations (
        service TEXT PRIMARY KEY, way TEXT NOT NULL, path TEXT NOT NULL);
    CREATE TABLE IF NOT EXISTS versions (
        service TEXT, version_stack TEXT, count INTEGER NOT NULL,
        PRIMARY KEY (service, version_stack));
    COMMIT;
)";

[[noreturn]] void Fail(sqlite3* database, std::filesystem::path const& file) {
    throw Failure(FailureKind::Other, "Cannot use the host's store \"" + file.string() +
                                          "\": " + sqlite3_errmsg(database) +
                                          "; check its rights and the free space of its disk.");
}

std::string ToWords(IDPath const& path) {
    std::string words;
    for (auto const& id : path)
        words += id.AsStdString() + ' ';
    return words;
}

IDPath ToIDPath(std::string const& text) {
    std::istringstream words(text);
    IDPath path;
    for (std::string word; words >> word;)
        path.emplace_back(word);
    return path;
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

    [[nodiscard]] std::int64_t Number() const { return sqlite3_column_int64(statement, 0); }

private:
    void Bind(int position, std::string const& text) {
        sqlite3_bind_text64(statement, position, text.data(), text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
    }
    void Bind(int position, Guid const& guid) { Bind(position, guid.AsStdString()); }
    void Bind(int position, std::filesystem::path const& path) {
        sqlite3_bind_blob64(statement, position, path.native().data(), path.native().size(),
                            SQLITE_TRANSIENT);
    }

    sqlite3* database;
    sqlite3_stmt* statement = nullptr;
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
}

AssetStore::~AssetStore() = default;

AssetStore::Asset AssetStore::AssetOf(std::filesystem::path const& canonicalPath) {
    std::lock_guard lock(mutex);
    auto* const db = database.get();
    Statement(db, "INSERT INTO library VALUES (1, ?) ON CONFLICT DO NOTHING", Guid::CreateUnique())
        .Run();
    Statement(db, "INSERT INTO movies VALUES (?, ?) ON CONFLICT DO NOTHING", canonicalPath,
              Guid::CreateUnique())
        .Run();
    Statement library(db, "SELECT guid FROM library");
    Statement movie(db, "SELECT guid FROM movies WHERE path = ?", canonicalPath);
    if (!library.Next() || !movie.Next()) Fail(db);
    return {Guid(library.Text()), Guid(movie.Text())};
}

std::optional<std::string> AssetStore::Read(Asset const& asset, std::string const& key) {
    std::lock_guard lock(mutex);
    Statement found(database.get(),
                    "SELECT value FROM strings WHERE service = ? AND library = ? AND movie = ? "
                    "AND key = ?",
                    service, asset.library, asset.movie, key);
    if (!found.Next()) return std::nullopt;
    return found.Text();
}

void AssetStore::Write(Asset const& asset, std::string const& key, std::string const& value) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "INSERT INTO strings VALUES (?, ?, ?, ?, ?) "
              "ON CONFLICT DO UPDATE SET value = excluded.value",
              service, asset.library, asset.movie, key, value)
        .Run();
}

void AssetStore::Forget(Asset const& asset, std::string const& key) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "DELETE FROM strings WHERE service = ? AND library = ? AND movie = ? AND key = ?",
              service, asset.library, asset.movie, key)
        .Run();
}

IDPath AssetStore::ReadIDPath(Asset const& asset) {
    std::lock_guard lock(mutex);
    Statement found(database.get(),
                    "SELECT way FROM ways WHERE service = ? AND library = ? AND movie = ?", service,
                    asset.library, asset.movie);
    return found.Next() ? ToIDPath(found.Text()) : IDPath();
}

void AssetStore::WriteIDPath(Asset const& asset, IDPath const& path) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "INSERT INTO ways VALUES (?, ?, ?, ?) "
              "ON CONFLICT DO UPDATE SET way = excluded.way",
              service, asset.library, asset.movie, ToWords(path))
        .Run();
}

std::optional<ChosenLocation> AssetStore::ReadDefaultDestination() {
    std::lock_guard lock(mutex);
    Statement found(database.get(), "SELECT way, path FROM default_destinations WHERE service = ?",
                    service);
    if (!found.Next()) return std::nullopt;
    return ChosenLocation{ToIDPath(found.Text(0)), found.Text(1)};
}

void AssetStore::WriteDefaultDestination(ChosenLocation const& location) {
    std::lock_guard lock(mutex);
    Statement(database.get(),
              "INSERT INTO default_destinations VALUES (?, ?, ?) "
              "ON CONFLICT DO UPDATE SET way = excluded.way, path = excluded.path",
              service, ToWords(location.idPath), location.namePath)
        .Run();
}

void AssetStore::ForgetDefaultDestination() {
    std::lock_guard lock(mutex);
    Statement(database.get(), "DELETE FROM default_destinations WHERE service = ?", service).Run();
}

std::int64_t AssetStore::CountVersions(Guid const& versionStack) {
    std::lock_guard lock(mutex);
    Statement found(database.get(),
                    "SELECT count FROM versions WHERE service = ? AND version_stack = ?", service,
                    versionStack);
    return found.Next() ? found.Number() : 0;
}

std::int64_t AssetStore::AddVersion(Guid const& versionStack) {
    std::lock_guard lock(mutex);
    Statement counted(database.get(),
                      "INSERT INTO versions VALUES (?, ?, 1) "
                      "ON CONFLICT DO UPDATE SET count = count + 1 RETURNING count",
                      service, versionStack);
    if (!counted.Next()) Fail(database.get());
    std::int64_t const count = counted.Number();
    counted.Run();
    return count;
}

}  // namespace quillohostkit
