#include "service/store/sqlite/SqliteStore.h"

#include "service/store/Schema.h"

namespace quilloservice {

namespace {

// Numbers of changes start at the current time in seconds, times 1,000,000, so that a number from
// an earlier store is never mistaken for one of this store.
constexpr char const* kFirstChange =
    "INSERT INTO sqlite_sequence (name, seq) "
    "VALUES ('changes', CAST(strftime('%s', 'now') AS INTEGER) * 1000000)";

void MakeTables(Database& database) {
    std::int64_t version = 0;
    {
        Statement query = database.Query("PRAGMA user_version");
        if (query.Next()) version = query.Integer(0);
    }
    for (SchemaStep const& step : SchemaStepsAfter(version)) {
        database.RunScript(step.sql);
        if (step.makesChanges) database.RunScript(kFirstChange);
        database.RunScript("PRAGMA user_version = " + std::to_string(step.version));
    }
}

}  // namespace

/// A connection from the pool.
class SqliteStore::Reader {
public:
    explicit Reader(SqliteStore const& owner) : store(owner) {
        {
            std::scoped_lock lock(store.readersMutex);
            if (!store.idleReaders.empty()) {
                database = std::move(store.idleReaders.back());
                store.idleReaders.pop_back();
            }
        }
        if (!database) database = std::make_unique<SqliteDatabase>(store.path);
    }
    ~Reader() {
        std::scoped_lock lock(store.readersMutex);
        store.idleReaders.push_back(std::move(database));
    }
    Reader(Reader const&) = delete;
    Reader& operator=(Reader const&) = delete;

    [[nodiscard]] Database& Get() const { return *database; }

private:
    SqliteStore const& store;
    std::unique_ptr<SqliteDatabase> database;
};

/// A transaction; the destructor rolls it back unless it was committed.
class SqliteStore::Transaction {
public:
    Transaction(Database& database, Durability durability) : database(database) {
        database.RunScript(durability == Durability::Disk
                               ? "PRAGMA synchronous = FULL; BEGIN IMMEDIATE"
                               : "PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE");
    }
    ~Transaction() {
        if (!open) return;
        try {
            database.RunScript("ROLLBACK");
        } catch (DatabaseError const&) {
            // SQLite has already rolled back, for example because the disk is full.
        }
    }
    Transaction(Transaction const&) = delete;
    Transaction& operator=(Transaction const&) = delete;

    void Commit() {
        database.RunScript("COMMIT");
        open = false;
    }

private:
    Database& database;
    bool open = true;
};

SqliteStore::SqliteStore(std::string file) : path(std::move(file)), writer(path) {
    Write(MakeTables);
}

void SqliteStore::ReadWith(std::function<void(Database&)> const& work) const {
    Reader reader(*this);
    work(reader.Get());
}

void SqliteStore::WriteWith(std::function<void(Database&)> const& work, Durability durability) {
    std::scoped_lock lock(writing);
    Transaction transaction(writer, durability);
    work(writer);
    transaction.Commit();
}

}  // namespace quilloservice
