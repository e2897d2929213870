#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "service/store/Database.h"

namespace quilloservice {

/// The service's SQLite file: one connection for writing and a pool of connections for reading, as
/// many as there are concurrent requests. Any thread.
class Store {
public:
    /// How durable a committed transaction is: it survives a power failure (Disk), or only the end
    /// of this process, which is much faster and enough for progress notes.
    enum class Durability { Disk, Process };

    /// Opens the file and creates or upgrades its tables.
    explicit Store(std::string file);

    /// Runs `work(Database&)`, which must only read, on a connection from the pool.
    template <typename Work>
    auto Read(Work&& work) const {
        Reader reader(*this);
        return work(*reader.database);
    }

    /// Runs `work(Database&)` in a transaction, which an exception rolls back. Transactions run one
    /// at a time, so `work` must be short: no syncing of files, no waiting for clients.
    template <typename Work>
    auto Write(Work&& work, Durability durability = Durability::Disk) {
        std::scoped_lock lock(writing);
        Transaction transaction(writer, durability);
        if constexpr (std::is_void_v<decltype(work(writer))>) {
            work(writer);
            transaction.Commit();
        } else {
            auto result = work(writer);
            transaction.Commit();
            return result;
        }
    }

private:
    struct Reader {
        explicit Reader(Store const& owner);
        ~Reader();
        Reader(Reader const&) = delete;
        Reader& operator=(Reader const&) = delete;
        Store const& store;
        std::unique_ptr<Database> database;
    };

    class Transaction {
    public:
        Transaction(Database& database, Durability durability);
        ~Transaction();
        Transaction(Transaction const&) = delete;
        Transaction& operator=(Transaction const&) = delete;
        void Commit();

    private:
        Database& database;
        bool open = true;
    };

    std::string path;
    std::mutex writing;
    Database writer;  // writing
    mutable std::mutex readersMutex;
    mutable std::vector<std::unique_ptr<Database>> idleReaders;  // readersMutex
};

}  // namespace quilloservice
