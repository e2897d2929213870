#include "service/store/Database.h"

#include <sqlite3.h>

namespace quilloservice {

namespace {

// Writers of this process queue on the store's mutex; another process may hold SQLite's lock.
constexpr int kBusyTimeoutMilliseconds = 10'000;

}  // namespace

bool DatabaseError::IsFull() const {
    return code == SQLITE_FULL;
}

Statement::Statement(Database& database, std::string text)
    : database(database), sql(std::move(text)) {
    if (auto idle = database.idle.find(sql); idle != database.idle.end()) {
        handle = idle->second.release();
        database.idle.erase(idle);
        return;
    }
    database.Check(sqlite3_prepare_v3(database.handle, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                                      &handle, nullptr),
                   sql);
}

Statement::~Statement() {
    sqlite3_reset(handle);
    sqlite3_clear_bindings(handle);
    database.idle.emplace(std::move(sql),
                          std::unique_ptr<sqlite3_stmt, Database::Finalize>(handle));
}

bool Statement::Next() {
    int result = sqlite3_step(handle);
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) database.Check(result, sql);
    return false;
}

std::string Statement::Text(int column) const {
    void const* text = sqlite3_column_blob(handle, column);
    auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle, column));
    return text == nullptr ? std::string() : std::string(static_cast<char const*>(text), size);
}

std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(handle, column);
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(handle, column) == SQLITE_NULL;
}

void Statement::BindText(int index, std::string_view text) {
    database.Check(
        sqlite3_bind_text64(handle, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8),
        sql);
}

void Statement::BindNumber(int index, std::int64_t number) {
    database.Check(sqlite3_bind_int64(handle, index, number), sql);
}

void Database::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Database::Database(std::string const& path) {
    int result = sqlite3_open_v2(path.c_str(), &handle,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX |
                                     SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW,
                                 nullptr);
    if (result != SQLITE_OK) {
        sqlite3_close(handle);
        throw DatabaseError(result, "cannot open " + path + ": " + sqlite3_errstr(result));
    }
    sqlite3_busy_timeout(handle, kBusyTimeoutMilliseconds);
    RunScript("PRAGMA journal_mode = WAL; PRAGMA foreign_keys = ON");
}

Database::~Database() {
    idle.clear();
    sqlite3_close(handle);
}

void Database::RunScript(char const* sql) {
    Check(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), sql);
}

void Database::Check(int result, std::string_view doing) const {
    if (result == SQLITE_OK) return;
    throw DatabaseError(
        result, std::string(sqlite3_errmsg(handle)) + " in: " + std::string(doing.substr(0, 200)));
}

int Database::Changes() const {
    return sqlite3_changes(handle);
}

}  // namespace quilloservice
