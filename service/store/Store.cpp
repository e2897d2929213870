#include "service/store/Store.h"

#include "service/store/Schema.h"

namespace quilloservice {

Store::Store(std::string file) : path(std::move(file)), writer(path) {
    Write([](Database& database) { MakeTables(database); });
}

Store::Reader::Reader(Store const& owner) : store(owner) {
    {
        std::scoped_lock lock(store.readersMutex);
        if (!store.idleReaders.empty()) {
            database = std::move(store.idleReaders.back());
            store.idleReaders.pop_back();
        }
    }
    if (!database) database = std::make_unique<Database>(store.path);
}

Store::Reader::~Reader() {
    std::scoped_lock lock(store.readersMutex);
    store.idleReaders.push_back(std::move(database));
}

Store::Transaction::Transaction(Database& database, Durability durability) : database(database) {
    database.RunScript(durability == Durability::Disk
                           ? "PRAGMA synchronous = FULL; BEGIN IMMEDIATE"
                           : "PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE");
}

Store::Transaction::~Transaction() {
    if (!open) return;
    try {
        database.RunScript("ROLLBACK");
    } catch (DatabaseError const&) {
        // SQLite has already rolled back, for example because the disk is full.
    }
}

void Store::Transaction::Commit() {
    database.RunScript("COMMIT");
    open = false;
}

}  // namespace quilloservice
