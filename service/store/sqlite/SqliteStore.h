#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "service/store/Store.h"
#include "service/store/sqlite/SqliteDatabase.h"

namespace quilloservice {

/// The records in a SQLite file: one connection for writing and a pool of connections for reading,
/// as many as there are concurrent requests. Transactions run one at a time.
class SqliteStore : public Store {
public:
    /// Opens the file and creates or upgrades its tables. Throws std::runtime_error if a newer
    /// version of the service wrote the file.
    explicit SqliteStore(std::string file);

private:
    class Reader;
    class Transaction;

    void ReadWith(std::function<void(Database&)> const& work) const override;
    void WriteWith(std::function<void(Database&)> const& work, Durability durability) override;

    std::string path;
    std::mutex writing;
    SqliteDatabase writer;  // writing
    mutable std::mutex readersMutex;
    mutable std::vector<std::unique_ptr<SqliteDatabase>> idleReaders;  // readersMutex
};

}  // namespace quilloservice
