#include "service/store/postgresql/PostgresqlDatabase.h"

#include <cstring>
#include <deque>
#include <vector>

#include "service/store/postgresql/PostgresqlDialect.h"

namespace quilloservice {

namespace {

using Kind = DatabaseError::Kind;

/// The kind of the error with this SQLSTATE.
Kind KindOf(std::string const& state) {
    if (state == "53100") return Kind::Full;
    if (state == "40001" || state == "40P01") return Kind::Collision;
    // Connection errors, a lack of connections or memory, a shutdown, a standby.
    for (char const* known : {"08", "53", "57P", "25006"}) {
        if (state.starts_with(known)) return Kind::Unavailable;
    }
    return Kind::Other;
}

pqxx::connection Connect(PostgresqlAddress const& address) {
    try {
        return pqxx::connection(address.GetParameters());
    } catch (pqxx::pqxx_exception const& error) {
        throw DatabaseError(Kind::Unavailable, "cannot connect to " + address.GetName() + ": " +
                                                   address.Clean(error.base().what()));
    }
}

}  // namespace

template <typename Work>
auto PostgresqlDatabase::Guard(std::string_view doing, Work&& work) const {
    try {
        return work();
    } catch (pqxx::transaction_rollback const& error) {
        Throw(Kind::Collision, error.what(), doing);
    } catch (pqxx::in_doubt_error const& error) {
        Throw(Kind::Unavailable, error.what(), doing);
    } catch (pqxx::broken_connection const& error) {
        Throw(Kind::Unavailable, error.what(), doing);
    } catch (pqxx::sql_error const& error) {
        Throw(IsOpen() ? KindOf(error.sqlstate()) : Kind::Unavailable, error.what(), doing);
    } catch (pqxx::pqxx_exception const& error) {
        Throw(IsOpen() ? Kind::Other : Kind::Unavailable, error.base().what(), doing);
    }
}

void PostgresqlDatabase::Throw(Kind kind, std::string const& message,
                               std::string_view doing) const {
    throw DatabaseError(kind, address.Clean(message) + " in: " + std::string(doing.substr(0, 200)));
}

/// The rows are all fetched by the first `Next`.
class PostgresqlDatabase::Prepared : public PreparedStatement {
public:
    Prepared(PostgresqlDatabase& database, std::string const& sql)
        : database(database),
          sql(ToPostgresql(sql)),
          name("s" + std::to_string(++database.prepared)) {
        database.connection.prepare(name, this->sql);
    }

    void BindText(int index, std::string_view text) override {
        if (text.find('\0') != std::string_view::npos) {
            throw DatabaseError(Kind::Other, "a text with NUL cannot be stored, in: " + sql);
        }
        Place(index) = texts.emplace_back(text).c_str();
    }

    void BindNumber(int index, std::int64_t number) override {
        Place(index) = texts.emplace_back(std::to_string(number)).c_str();
    }

    void BindNull(int index) override { Place(index) = nullptr; }

    bool Next() override {
        if (row < 0) {
            rows = database.Guard(sql, [this] {
                return database.transaction->exec_prepared(
                    name, pqxx::prepare::make_dynamic_params(arguments));
            });
        }
        return ++row < static_cast<int>(rows.size());
    }

    [[nodiscard]] std::string Text(int column) const override {
        pqxx::field field = At(column);
        return {field.c_str(), field.size()};
    }

    [[nodiscard]] std::int64_t Integer(int column) const override {
        char const* text = At(column).c_str();
        return *text == 't' ? 1 : std::strtoll(text, nullptr, 10);
    }

    [[nodiscard]] bool IsNull(int column) const override { return At(column).is_null(); }

    [[nodiscard]] int Changes() const override { return static_cast<int>(rows.affected_rows()); }

    void Reset() override {
        arguments.clear();
        texts.clear();
        rows.clear();
        row = -1;
    }

private:
    char const*& Place(int index) {
        auto count = static_cast<std::size_t>(index);
        if (arguments.size() < count) arguments.resize(count);
        return arguments[count - 1];
    }

    [[nodiscard]] pqxx::field At(int column) const {
        return rows[static_cast<pqxx::result::size_type>(row)]
                   [static_cast<pqxx::row::size_type>(column)];
    }

    PostgresqlDatabase& database;
    std::string sql;
    std::string name;
    std::deque<std::string> texts;  ///< whose elements stay where they are
    std::vector<char const*> arguments;
    pqxx::result rows;
    int row = -1;
};

PostgresqlDatabase::PostgresqlDatabase(PostgresqlAddress const& address)
    : address(address), connection(Connect(address)) {}

PostgresqlDatabase::~PostgresqlDatabase() {
    ForgetStatements();
    transaction.reset();
}

void PostgresqlDatabase::BeginReading() {
    Guard("BEGIN", [this] { transaction = std::make_unique<pqxx::nontransaction>(connection); });
}

void PostgresqlDatabase::BeginWriting(Store::Durability durability) {
    Guard("BEGIN", [&] {
        transaction =
            std::make_unique<pqxx::transaction<pqxx::isolation_level::serializable>>(connection);
        if (durability == Store::Durability::Process) {
            transaction->exec("SET LOCAL synchronous_commit = off");
        }
    });
}

void PostgresqlDatabase::Commit() {
    Guard("COMMIT", [this] { transaction->commit(); });
}

void PostgresqlDatabase::End() {
    transaction.reset();
}

void PostgresqlDatabase::RunScript(std::string const& sql) {
    Guard(sql, [&] { transaction->exec(sql); });
}

Dialect const& PostgresqlDatabase::GetDialect() const {
    return kPostgresqlDialect;
}

std::unique_ptr<PreparedStatement> PostgresqlDatabase::Prepare(std::string const& sql) {
    return Guard(sql, [&] { return std::make_unique<Prepared>(*this, sql); });
}

}  // namespace quilloservice
