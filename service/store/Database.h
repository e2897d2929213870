#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>

namespace quilloservice {

/// An error of the database. The message contains the engine's message and the statement, but no
/// arguments and no password.
class DatabaseError : public std::runtime_error {
public:
    enum class Kind {
        Other,
        Full,         ///< the disk is full
        Unavailable,  ///< the server cannot be reached or is busy; a later attempt may succeed
        Collision,    ///< concurrent transactions disturbed each other; `Store::Write` repeats
    };

    DatabaseError(Kind errorKind, std::string const& message)
        : std::runtime_error(message), kind(errorKind) {}

    Kind kind;
};

/// The SQL in which the engines differ. Everything else is written so that all engines take it:
/// question marks for arguments, `ON CONFLICT`, `RETURNING`, and no order of rows without
/// `ORDER BY`.
struct Dialect {
    /// A query for the number of the latest change; that of the start if there was none.
    char const* lastChange;
};

/// A statement that an engine has prepared.
class PreparedStatement {
public:
    virtual ~PreparedStatement() = default;

    /// Arguments count from 1. All have to be bound.
    virtual void BindText(int index, std::string_view text) = 0;
    virtual void BindNumber(int index, std::int64_t number) = 0;
    virtual void BindNull(int index) = 0;

    /// Moves to the next row; false if there is none. The first call runs the statement.
    virtual bool Next() = 0;

    // Of the current row; columns count from 0.
    [[nodiscard]] virtual std::string Text(int column) const = 0;
    [[nodiscard]] virtual std::int64_t Integer(int column) const = 0;
    [[nodiscard]] virtual bool IsNull(int column) const = 0;

    /// The number of rows that the statement has changed.
    [[nodiscard]] virtual int Changes() const = 0;

    /// Forgets the arguments and the rows.
    virtual void Reset() = 0;
};

class Database;

/// A statement with bound arguments. Its destructor returns it to the connection's cache. Columns
/// count from 0 and can be read after `Next` has returned true.
class Statement {
public:
    Statement(Statement&&) = delete;
    ~Statement();

    /// Moves to the next row; false if there is none.
    bool Next() { return Prepared().Next(); }

    [[nodiscard]] std::string Text(int column) const { return Prepared().Text(column); }
    /// A number, or a truth value as 0 or 1.
    [[nodiscard]] std::int64_t Integer(int column) const { return Prepared().Integer(column); }
    /// Text, or nothing for NULL.
    [[nodiscard]] std::optional<std::string> OptionalText(int column) const {
        return Prepared().IsNull(column) ? std::nullopt : std::optional(Text(column));
    }

    /// An Id of type `IdType`; OptionalId: nothing for NULL.
    template <typename IdType>
    [[nodiscard]] IdType Id(int column) const {
        return IdType(Text(column));
    }
    template <typename IdType>
    [[nodiscard]] std::optional<IdType> OptionalId(int column) const {
        return Prepared().IsNull(column) ? std::nullopt : std::optional(Id<IdType>(column));
    }

    /// The number of rows that the statement has changed.
    [[nodiscard]] int Changes() const { return Prepared().Changes(); }

    /// Binds a number, an enumerator, a text, an Id, or an optional of these (NULL if empty).
    template <typename Argument>
    void Bind(int index, Argument const& argument) {
        if constexpr (std::is_integral_v<Argument> || std::is_enum_v<Argument>) {
            Prepared().BindNumber(index, static_cast<std::int64_t>(argument));
        } else if constexpr (requires { argument.has_value(); }) {
            if (argument) {
                Bind(index, *argument);
            } else {
                Prepared().BindNull(index);
            }
        } else if constexpr (requires { argument.GetText(); }) {
            Prepared().BindText(index, argument.GetText());
        } else {
            Prepared().BindText(index, argument);
        }
    }

private:
    friend class Database;
    using Cache = std::unordered_multimap<std::string, std::unique_ptr<PreparedStatement>>;

    template <typename... Arguments>
    Statement(Database& database, std::string sql, Arguments const&... arguments)
        : Statement(database, std::move(sql)) {
        int index = 0;
        (Bind(++index, arguments), ...);
    }
    Statement(Database& database, std::string sql);

    [[nodiscard]] PreparedStatement& Prepared() const { return *entry.mapped(); }

    Database& database;
    Cache::node_type entry;
};

/// A connection to the database. One thread at a time.
class Database {
public:
    virtual ~Database() = default;
    Database() = default;
    Database(Database const&) = delete;
    Database& operator=(Database const&) = delete;

    /// Prepares `sql` and binds `arguments` to its question marks.
    template <typename... Arguments>
    [[nodiscard]] Statement Query(std::string sql, Arguments const&... arguments) {
        return Statement(*this, std::move(sql), arguments...);
    }

    /// Runs one statement; returns the number of rows changed.
    template <typename... Arguments>
    int Run(std::string sql, Arguments const&... arguments) {
        Statement statement = Query(std::move(sql), arguments...);
        statement.Next();
        return statement.Changes();
    }

    /// Runs several statements without arguments, in the engine's own SQL.
    virtual void RunScript(std::string const& sql) = 0;

    [[nodiscard]] virtual Dialect const& GetDialect() const = 0;

protected:
    /// Deletes the idle statements. To be called before the connection is closed.
    void ForgetStatements() { idle.clear(); }

private:
    friend class Statement;

    [[nodiscard]] virtual std::unique_ptr<PreparedStatement> Prepare(std::string const& sql) = 0;

    Statement::Cache idle;
};

}  // namespace quilloservice
