#include "service/store/sqlite/SqliteDatabase.h"

#include <sqlite3.h>

namespace quilloservice {

namespace {

// Writers of this process queue on the store's mutex; another process may hold SQLite's lock.
constexpr int kBusyTimeoutMilliseconds = 10'000;

DatabaseError MakeError(int result, std::string const& message) {
    return {result == SQLITE_FULL ? DatabaseError::Kind::Full : DatabaseError::Kind::Other,
            message};
}

void Check(sqlite3* database, int result, std::string_view doing) {
    if (result == SQLITE_OK) return;
    throw MakeError(result, std::string(sqlite3_errmsg(database)) +
                                " in: " + std::string(doing.substr(0, 200)));
}

class SqliteStatement : public PreparedStatement {
public:
    SqliteStatement(sqlite3* database, std::string const& sql) : database(database) {
        quilloservice::Check(database,
                             sqlite3_prepare_v3(database, sql.c_str(), -1,
                                                SQLITE_PREPARE_PERSISTENT, &handle, nullptr),
                             sql);
    }
    ~SqliteStatement() override { sqlite3_finalize(handle); }
    SqliteStatement(SqliteStatement const&) = delete;
    SqliteStatement& operator=(SqliteStatement const&) = delete;

    void BindText(int index, std::string_view text) override {
        Check(sqlite3_bind_text64(handle, index, text.data(), text.size(), SQLITE_TRANSIENT,
                                  SQLITE_UTF8));
    }

    void BindNumber(int index, std::int64_t number) override {
        Check(sqlite3_bind_int64(handle, index, number));
    }

    void BindNull(int index) override { Check(sqlite3_bind_null(handle, index)); }

    bool Next() override {
        int result = sqlite3_step(handle);
        if (result == SQLITE_ROW) return true;
        if (result != SQLITE_DONE) Check(result);
        return false;
    }

    [[nodiscard]] std::string Text(int column) const override {
        void const* text = sqlite3_column_blob(handle, column);
        auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle, column));
        return text == nullptr ? std::string() : std::string(static_cast<char const*>(text), size);
    }

    [[nodiscard]] std::int64_t Integer(int column) const override {
        return sqlite3_column_int64(handle, column);
    }

    [[nodiscard]] bool IsNull(int column) const override {
        return sqlite3_column_type(handle, column) == SQLITE_NULL;
    }

    [[nodiscard]] int Changes() const override { return sqlite3_changes(database); }

    void Reset() override {
        sqlite3_reset(handle);
        sqlite3_clear_bindings(handle);
    }

private:
    void Check(int result) const { quilloservice::Check(database, result, sqlite3_sql(handle)); }

    sqlite3* database;
    sqlite3_stmt* handle = nullptr;
};

}  // namespace

SqliteDatabase::SqliteDatabase(std::string const& path) {
    int result = sqlite3_open_v2(path.c_str(), &handle,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX |
                                     SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW,
                                 nullptr);
    if (result != SQLITE_OK) {
        sqlite3_close(handle);
        throw MakeError(result, "cannot open " + path + ": " + sqlite3_errstr(result));
    }
    sqlite3_busy_timeout(handle, kBusyTimeoutMilliseconds);
    RunScript("PRAGMA journal_mode = WAL; PRAGMA foreign_keys = ON");
}

SqliteDatabase::~SqliteDatabase() {
    ForgetStatements();
    sqlite3_close(handle);
}

void SqliteDatabase::RunScript(std::string const& sql) {
    Check(handle, sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), sql);
}

Dialect const& SqliteDatabase::GetDialect() const {
    static constexpr Dialect kDialect{.lastChange =
                                          "SELECT seq FROM sqlite_sequence WHERE name = 'changes'"};
    return kDialect;
}

std::unique_ptr<PreparedStatement> SqliteDatabase::Prepare(std::string const& sql) {
    return std::make_unique<SqliteStatement>(handle, sql);
}

}  // namespace quilloservice
