#include "service/store/postgresql/Migration.h"

#include <stdexcept>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/store/postgresql/PostgresqlStore.h"
#include "service/store/sqlite/SqliteStore.h"

namespace quilloservice {

namespace {

constexpr int kRowsAtOnce = 200;

struct Table {
    char const* name;
    char const* order;    ///< the columns that order the rows
    char const* counter;  ///< the column that numbers the rows; may be null
};

// Tables that others refer to come first.
constexpr Table kTables[] = {{"users", "id", nullptr},
                             {"nodes", "seq", "seq"},
                             {"memberships", "user, account", nullptr},
                             {"movies", "asset", nullptr},
                             {"sessions", "id", "id"},
                             {"tokens", "hash", nullptr},
                             {"uploads", "id", nullptr},
                             {"idempotency_keys", "user, key", nullptr},
                             {"link_assets", "seq", "seq"},
                             {"changes", "seq", nullptr}};

std::vector<std::string> ColumnsOf(Database& source, Table const& table) {
    Statement row =
        source.Query("SELECT name FROM pragma_table_info(?)", std::string_view(table.name));
    std::vector<std::string> columns;
    while (row.Next())
        columns.push_back(row.Text(0));
    return columns;
}

std::string Join(std::vector<std::string> const& parts) {
    std::string text;
    for (std::string const& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

using Row = std::vector<std::optional<std::string>>;

void Insert(Database& target, Table const& table, std::vector<std::string> const& columns,
            std::vector<Row> const& rows) {
    if (rows.empty()) return;
    std::string values = "(" + Join(std::vector<std::string>(columns.size(), "?")) + ")";
    Statement insertion =
        target.Query("INSERT INTO " + std::string(table.name) + " (" + Join(columns) + ") VALUES " +
                     Join(std::vector<std::string>(rows.size(), values)));
    int index = 0;
    for (Row const& row : rows) {
        for (auto const& value : row)
            insertion.Bind(++index, value);
    }
    insertion.Next();
}

/// Calls `take` with up to kRowsAtOnce rows at a time.
template <typename Take>
void ForRows(Database& source, Table const& table, std::vector<std::string> const& columns,
             Take&& take) {
    Statement row = source.Query("SELECT " + Join(columns) + " FROM " + table.name + " ORDER BY " +
                                 table.order);
    std::vector<Row> rows;
    while (row.Next()) {
        Row& values = rows.emplace_back();
        for (std::size_t column = 0; column < columns.size(); ++column)
            values.push_back(row.OptionalText(static_cast<int>(column)));
        if (rows.size() == kRowsAtOnce) {
            take(rows);
            rows.clear();
        }
    }
    take(rows);
}

/// A digest of all records.
std::string Fingerprint(Database& source) {
    Digest digest;
    for (Table const& table : kTables) {
        digest.Update(std::string(table.name) + "\n");
        ForRows(source, table, ColumnsOf(source, table), [&](std::vector<Row> const& rows) {
            for (Row const& row : rows) {
                for (auto const& value : row) {
                    digest.Update(value ? std::to_string(value->size()) + ":" + *value : "-");
                }
            }
        });
    }
    return ToHex(digest.Value());
}

bool IsEmpty(Database& target) {
    for (Table const& table : kTables) {
        if (table.name == std::string_view("changes")) continue;  // it begins with a row
        if (target.Query("SELECT 1 FROM " + std::string(table.name) + " LIMIT 1").Next()) {
            return false;
        }
    }
    return true;
}

std::string CopiedFrom(Database& target) {
    Statement row = target.Query("SELECT copied_from FROM store_info");
    return row.Next() ? row.Text(0) : "";
}

std::int64_t CopyTable(Database& source, Database& target, Table const& table) {
    std::int64_t count = 0;
    std::vector<std::string> columns = ColumnsOf(source, table);
    ForRows(source, table, columns, [&](std::vector<Row> const& rows) {
        Insert(target, table, columns, rows);
        count += static_cast<std::int64_t>(rows.size());
    });
    if (table.counter != nullptr) {
        std::string name = table.name;
        std::string counter = table.counter;
        target.RunScript("SELECT setval(pg_get_serial_sequence('" + name + "', '" + counter +
                         "'), max(" + counter + ")) FROM " + name + " HAVING max(" + counter +
                         ") IS NOT NULL");
    }
    return count;
}

/// Has the numbers of changes continue after the source's.
void ContinueChanges(Database& source, Database& target) {
    Statement last = source.Query(source.GetDialect().lastChange);
    last.Next();
    std::int64_t number = last.Integer(0);
    target.Query("SELECT setval('change_numbers', ?)", number).Next();
    target.Run(
        "INSERT INTO changes (seq, list, audience) VALUES (?, '', '') ON CONFLICT DO NOTHING",
        number);
}

CopyReport Copy(Database& source, Database& target, std::string const& fingerprint) {
    CopyReport report;
    target.Run("DELETE FROM changes");
    for (Table const& table : kTables)
        report.rows.emplace_back(table.name, CopyTable(source, target, table));
    ContinueChanges(source, target);
    target.Run("UPDATE store_info SET copied_from = ?", fingerprint);
    return report;
}

}  // namespace

CopyReport CopyRecords(SqliteStore const& source, PostgresqlStore& target) {
    return source.Read([&](Database& from) {
        std::string fingerprint = Fingerprint(from);
        return target.Write([&](Database& to) {
            if (IsEmpty(to)) return Copy(from, to, fingerprint);
            if (CopiedFrom(to) == fingerprint) return CopyReport{.wasCopied = true};
            throw std::runtime_error(target.GetName() +
                                     " has records already; nothing was copied. Copying takes an "
                                     "empty database");
        });
    });
}

}  // namespace quilloservice
