#include "service/store/postgresql/PostgresqlStore.h"

#include <chrono>
#include <random>
#include <stdexcept>
#include <thread>

#include "service/store/Schema.h"
#include "service/store/postgresql/PostgresqlDialect.h"

namespace quilloservice {

namespace {

using Kind = DatabaseError::Kind;

constexpr int kMostAttempts = 20;

constexpr char const* kVersionTable =
    "CREATE TABLE IF NOT EXISTS store_info (version BIGINT NOT NULL, copied_from TEXT);"
    "INSERT INTO store_info (version) SELECT 0 WHERE NOT EXISTS (SELECT 1 FROM store_info)";

// A reader must not miss a change that becomes visible after one with a higher number. So a
// transaction takes numbers under a lock that it holds to its end. The numbers start at the current
// time in seconds, times 1,000,000, so that a number from an earlier store is never mistaken for
// one of this store. The first row has an audience that does not exist.
constexpr char const* kChangeNumbers = R"sql(
CREATE SEQUENCE change_numbers;
CREATE FUNCTION next_change() RETURNS BIGINT LANGUAGE plpgsql AS $$
BEGIN
    PERFORM pg_advisory_xact_lock('changes'::regclass::oid::bigint);
    RETURN nextval('change_numbers');
END $$;
ALTER TABLE changes ALTER COLUMN seq DROP IDENTITY;
ALTER TABLE changes ALTER COLUMN seq SET DEFAULT next_change();
SELECT setval('change_numbers', CAST(extract(epoch FROM now()) AS BIGINT) * 1000000);
INSERT INTO changes (seq, list, audience)
    SELECT last_value, '', '' FROM change_numbers;
)sql";

/// Serializes the upgrades of several processes.
constexpr char const* kUpgradeLock = "SELECT pg_advisory_lock(hashtext('quillo-service upgrade'))";
constexpr char const* kUpgradeUnlock =
    "SELECT pg_advisory_unlock(hashtext('quillo-service upgrade'))";

void Upgrade(Database& database) {
    database.RunScript(kVersionTable);
    std::int64_t version = 0;
    {
        Statement query = database.Query("SELECT version FROM store_info");
        if (query.Next()) version = query.Integer(0);
    }
    for (SchemaStep const& step : SchemaStepsAfter(version)) {
        database.RunScript(SchemaToPostgresql(step.sql));
        if (step.makesChanges) database.RunScript(kChangeNumbers);
        database.Run("UPDATE store_info SET version = ?", step.version);
    }
}

/// Waits before a transaction that collided is repeated: up to 1 ms, then up to twice as long each
/// time, up to 128 ms. By chance, so that the two do not collide again.
void WaitBeforeRepeating(int attempt) {
    thread_local std::mt19937 random{std::random_device{}()};
    int most = 1000 << std::min(attempt - 1, 7);
    std::this_thread::sleep_for(
        std::chrono::microseconds(std::uniform_int_distribution(0, most)(random)));
}

}  // namespace

/// A connection from the pool.
class PostgresqlStore::Lease {
public:
    explicit Lease(PostgresqlStore const& owner) : store(owner) {
        {
            std::scoped_lock lock(store.mutex);
            if (!store.idle.empty()) {
                database = std::move(store.idle.back());
                store.idle.pop_back();
            }
        }
        wasIdle = database != nullptr;
        if (!database) database = std::make_unique<PostgresqlDatabase>(store.address);
    }
    ~Lease() {
        database->End();
        if (broken || !database->IsOpen()) return;
        std::scoped_lock lock(store.mutex);
        store.idle.push_back(std::move(database));
    }
    Lease(Lease const&) = delete;
    Lease& operator=(Lease const&) = delete;

    [[nodiscard]] PostgresqlDatabase& Get() const { return *database; }

    /// Notes an error. Returns whether the connection may have broken while it was idle, so that
    /// another one may work.
    bool WasStale(DatabaseError const& error) {
        broken = error.kind == Kind::Unavailable;
        return wasIdle && broken;
    }

private:
    PostgresqlStore const& store;
    std::unique_ptr<PostgresqlDatabase> database;
    bool wasIdle = false;
    bool broken = false;
};

PostgresqlStore::PostgresqlStore(std::string const& url) : address(url) {
    MakeTables();
}

void PostgresqlStore::MakeTables() {
    PostgresqlDatabase locker(address);
    locker.BeginReading();
    Statement encoding = locker.Query("SHOW server_encoding");
    if (encoding.Next() && encoding.Text(0) != "UTF8") {
        throw std::runtime_error(GetName() + " has the encoding " + encoding.Text(0) +
                                 "; make a database with UTF8");
    }
    locker.RunScript(kUpgradeLock);
    Write(Upgrade);
    locker.RunScript(kUpgradeUnlock);
}

void PostgresqlStore::ReadWith(std::function<void(Database&)> const& work) const {
    for (;;) {
        Lease lease(*this);
        try {
            lease.Get().BeginReading();
            return work(lease.Get());
        } catch (DatabaseError const& error) {
            if (!lease.WasStale(error)) throw;
        }
    }
}

void PostgresqlStore::WriteWith(std::function<void(Database&)> const& work, Durability durability) {
    for (int attempt = 1;;) {
        Lease lease(*this);
        bool committing = false;
        try {
            lease.Get().BeginWriting(durability);
            work(lease.Get());
            committing = true;
            return lease.Get().Commit();
        } catch (DatabaseError const& error) {
            bool collided = error.kind == Kind::Collision && attempt < kMostAttempts;
            bool stale = lease.WasStale(error);
            // Whether a commit took effect is not known if the connection broke.
            if (!collided && (committing || !stale)) throw;
            lease.Get().End();
            if (collided) WaitBeforeRepeating(attempt++);
        }
    }
}

}  // namespace quilloservice
