#pragma once

namespace quilloservice {

class Database;

/// Creates the tables of an empty store, or upgrades those of an older version. Throws if a newer
/// version of the service wrote the store.
void MakeTables(Database& database);

}  // namespace quilloservice
