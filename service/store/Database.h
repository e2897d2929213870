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

/// What SQLite reports: `code` is its result code, the message says what was being done.
class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int resultCode, std::string const& message)
        : std::runtime_error(message), code(resultCode) {}

    /// Whether the disk had no room left.
    [[nodiscard]] bool IsFull() const;

    int code;
};

class Database;

/// A statement with its arguments bound. Goes back to the connection's cache at its end. Columns
/// are counted from 0 and may be read after `Next` returned true.
class Statement {
public:
    Statement(Statement&&) = delete;
    ~Statement();

    /// Moves to the next row; false when there is none.
    bool Next();

    [[nodiscard]] std::string Text(int column) const;
    [[nodiscard]] std::int64_t Integer(int column) const;
    [[nodiscard]] std::optional<std::string> OptionalText(int column) const;

private:
    friend class Database;
    Statement(Database& database, std::string text);

    template <typename... Arguments>
    Statement(Database& database, std::string sql, Arguments const&... arguments)
        : Statement(database, std::move(sql)) {
        int index = 0;
        (Bind(++index, arguments), ...);
    }

    template <typename Argument>
    void Bind(int index, Argument const& argument) {
        if constexpr (std::is_integral_v<Argument>) {
            BindNumber(index, argument);
        } else if constexpr (std::is_same_v<Argument, std::optional<std::string>>) {
            if (argument) BindText(index, *argument);
        } else {
            BindText(index, argument);
        }
    }
    void BindText(int index, std::string_view text);
    void BindNumber(int index, std::int64_t number);

    Database& database;
    std::string sql;
    sqlite3_stmt* handle;
};

/// One connection to a SQLite file. One thread at a time.
class Database {
public:
    /// Opens the file at `path`, in which no part is a link, and makes it when it is missing.
    explicit Database(std::string const& path);
    ~Database();
    Database(Database const&) = delete;
    Database& operator=(Database const&) = delete;

    /// Prepares `sql` with `arguments` for its question marks, to be stepped through.
    template <typename... Arguments>
    [[nodiscard]] Statement Query(std::string sql, Arguments const&... arguments) {
        return Statement(*this, std::move(sql), arguments...);
    }

    /// Runs one statement to its end; returns how many rows it changed.
    template <typename... Arguments>
    int Run(std::string sql, Arguments const&... arguments) {
        Query(std::move(sql), arguments...).Next();
        return Changes();
    }

    /// Runs several statements that take no arguments.
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
