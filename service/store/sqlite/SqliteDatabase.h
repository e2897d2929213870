#pragma once

#include "service/store/Database.h"

struct sqlite3;

namespace quilloservice {

/// A connection to a SQLite file. One thread at a time.
class SqliteDatabase : public Database {
public:
    /// Opens the file at `path`, creating it if it is missing. No component of `path` may be a
    /// symbolic link.
    explicit SqliteDatabase(std::string const& path);
    ~SqliteDatabase() override;

    void RunScript(std::string const& sql) override;
    [[nodiscard]] Dialect const& GetDialect() const override;

private:
    [[nodiscard]] std::unique_ptr<PreparedStatement> Prepare(std::string const& sql) override;

    sqlite3* handle = nullptr;
};

}  // namespace quilloservice
