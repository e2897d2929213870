#pragma once

#include <memory>
#include <pqxx/pqxx>

#include "service/store/Store.h"
#include "service/store/postgresql/PostgresqlAddress.h"

namespace quilloservice {

/// A connection to a PostgreSQL server. Statements run within `BeginReading` or `BeginWriting` and
/// `End`. One thread at a time.
class PostgresqlDatabase : public Database {
public:
    /// Connects. `address` must outlive this object.
    explicit PostgresqlDatabase(PostgresqlAddress const& address);
    ~PostgresqlDatabase() override;

    /// Starts statements that each see the latest state, outside a transaction.
    void BeginReading();

    /// Starts a serializable transaction.
    void BeginWriting(Store::Durability durability);

    /// Throws DatabaseError Unavailable if the connection broke meanwhile: the transaction may be
    /// complete or not.
    void Commit();

    /// Ends what was begun; rolls a transaction back unless it was committed.
    void End();

    /// Whether the connection can be used again.
    [[nodiscard]] bool IsOpen() const { return connection.is_open(); }

    void RunScript(std::string const& sql) override;
    [[nodiscard]] Dialect const& GetDialect() const override;

private:
    class Prepared;

    [[nodiscard]] std::unique_ptr<PreparedStatement> Prepare(std::string const& sql) override;

    /// Runs `work` and turns exceptions of libpqxx into DatabaseError.
    template <typename Work>
    auto Guard(std::string_view doing, Work&& work) const;
    [[noreturn]] void Throw(DatabaseError::Kind kind, std::string const& message,
                            std::string_view doing) const;

    PostgresqlAddress const& address;
    pqxx::connection connection;
    pqxx::quiet_errorhandler notices{connection};  ///< which go to standard error otherwise
    std::unique_ptr<pqxx::transaction_base> transaction;
    int prepared = 0;  ///< number of prepared statements, for their names
};

}  // namespace quilloservice
