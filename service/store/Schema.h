#pragma once

#include <cstdint>
#include <span>

namespace quilloservice {

/// What brings the tables of a store to `version` from the version before.
struct SchemaStep {
    std::int64_t version;
    /// SQLite's SQL. Other engines translate it: INTEGER has 64 bits, and an INTEGER PRIMARY KEY
    /// numbers its rows.
    char const* sql;
    /// The step makes the table `changes`; the engine then says where its numbers start, and that
    /// they grow in the order in which transactions become visible.
    bool makesChanges = false;
};

/// The steps that are missing in a store of this version (0: it is empty). Throws
/// std::runtime_error if a newer version of the service wrote the store.
std::span<SchemaStep const> SchemaStepsAfter(std::int64_t version);

}  // namespace quilloservice
