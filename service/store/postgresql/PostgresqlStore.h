#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "service/store/Store.h"
#include "service/store/postgresql/PostgresqlAddress.h"
#include "service/store/postgresql/PostgresqlDatabase.h"

namespace quilloservice {

/// The records in a PostgreSQL database, with a pool of as many connections as there are concurrent
/// requests. Transactions are serializable; one that collides with another is repeated. While the
/// server is away, functions throw DatabaseError Unavailable; they work again when it is back.
class PostgresqlStore : public Store {
public:
    /// Connects, and creates or upgrades the tables in the first schema of the connection's search
    /// path. Throws std::runtime_error if a newer version of the service wrote them.
    explicit PostgresqlStore(std::string const& url);

    /// The address without its password, for messages.
    [[nodiscard]] std::string const& GetName() const { return address.GetName(); }

private:
    class Lease;

    void ReadWith(std::function<void(Database&)> const& work) const override;
    void WriteWith(std::function<void(Database&)> const& work, Durability durability) override;
    void MakeTables();

    PostgresqlAddress const address;
    mutable std::mutex mutex;
    mutable std::vector<std::unique_ptr<PostgresqlDatabase>> idle;  // mutex
};

}  // namespace quilloservice
