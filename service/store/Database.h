#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace quilloservice {

/// An error of SQLite. The message contains SQLite's message and the statement.
class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int resultCode, std::string const& message)
        : std::runtime_error(message), code(resultCode) {}

    /// Whether the disk is full.
    [[nodiscard]] bool IsFull() const;

    int code;  ///< SQLite's extended result code
};

class Database;

/// A statement with bound arguments. Its destructor returns it to the connection's cache. Columns
/// count from 0 and can be read after `Next` has returned true.
class Statement {
public:
    Statement(Statement&&) = delete;
    ~Statement();

    /// Moves to the next row; false if there is none.
    bool Next();

    [[nodiscard]] std::string Text(int column) const;
    [[nodiscard]] std::int64_t Integer(int column) const;

    /// An Id of type `IdType`; OptionalId: nothing for NULL.
    template <typename IdType>
    [[nodiscard]] IdType Id(int column) const {
        return IdType(Text(column));
    }
    template <typename IdType>
    [[nodiscard]] std::optional<IdType> OptionalId(int column) const {
        return IsNull(column) ? std::nullopt : std::optional(Id<IdType>(column));
    }

private:
    friend class Database;
    Statement(Database& database, std::string text);

    template <typename... Arguments>
    Statement(Database& database, std::string sql, Arguments const&... arguments)
        : Statement(database, std::move(sql)) {
        int index = 0;
        (Bind(++index, arguments), ...);
    }

    /// Binds a number, an enumerator, a text, an Id, or an optional of these (NULL if empty).
    template <typename Argument>
    void Bind(int index, Argument const& argument) {
        if constexpr (std::is_integral_v<Argument> || std::is_enum_v<Argument>) {
            BindNumber(index, static_cast<std::int64_t>(argument));
        } else if constexpr (requires { argument.has_value(); }) {
            if (argument) Bind(index, *argument);
        } else if constexpr (requires { argument.GetText(); }) {
            BindText(index, argument.GetText());
        } else {
            BindText(index, argument);
        }
    }
    void BindText(int index, std::string_view text);
    void BindNumber(int index, std::int64_t number);
    [[nodiscard]] bool IsNull(int column) const;

    Database& database;
    std::string sql;
    sqlite3_stmt* handle;
};

/// A connection to a SQLite file. One thread at a time.
class Database {
public:
    /// Opens the file at `path`, creating it if it is missing. No component of `path` may be a
    /// symbolic link.
    explicit Database(std::string const& path);
    ~Database();
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
        Query(std::move(sql), arguments...).Next();
        return Changes();
    }

    /// Runs several statements without arguments.
    void RunScript(char const* sql);

private:
    friend class Statement;
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    void Check(int result, std::string_view doing) const;
    int Changes() const;

    sqlite3* handle = nullptr;
    std::unordered_multimap<std::string, std::unique_ptr<sqlite3_stmt, Finalize>> idle;
};

}  // namespace quilloservice
