#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quilloservice {

class PostgresqlStore;
class SqliteStore;

/// What CopyRecords has done.
struct CopyReport {
    bool wasCopied = false;  ///< an earlier call has copied the same records; nothing was done
    std::vector<std::pair<std::string, std::int64_t>>
        rows;  ///< tables and the number of their rows
};

/// Copies all records to an empty store, all or none; clients keep their sessions and their
/// position in the feed of changes. Neither store may be in use. Throws std::runtime_error if the
/// target has other records.
CopyReport CopyRecords(SqliteStore const& source, PostgresqlStore& target);

}  // namespace quilloservice
