#include "service/store/Store.h"

#include "service/store/Schema.h"

namespace quilloservice {

Store::Store(std::string path) : path_(std::move(path)), writer_(path_) {
    Write([](Database& database) { MakeTables(database); });
}

Store::Reader::Reader(Store const& owner) : store(owner) {
    {
        std::scoped_lock lock(store.readersMutex_);
        if (!store.idleReaders_.empty()) {
            database = std::move(store.idleReaders_.back());
            store.idleReaders_.pop_back();
        }
    }
    if (!database) database = std::make_unique<Database>(store.path_);
}

Store::Reader::~Reader() {
    std::scoped_lock lock(store.readersMutex_);
    store.idleReaders_.push_back(std::move(database));
}

Store::Transaction::Transaction(Database& database, Durability durability) : database_(database) {
    database_.RunScript(durability == Durability::Disk
                            ? "PRAGMA synchronous = FULL; BEGIN IMMEDIATE"
                            : "PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE");
}

Store::Transaction::~Transaction() {
    if (!open_) return;
    try {
        database_.RunScript("ROLLBACK");
    } catch (DatabaseError const&) {
        // SQLite has already rolled back, as it does when the disk is full.
    }
}

void Store::Transaction::Commit() {
    database_.RunScript("COMMIT");
    open_ = false;
}

}  // namespace quilloservice
