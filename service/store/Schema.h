#pragma once

namespace quilloservice {

class Database;

/// Makes the tables of an empty store. Throws when the store is of a newer service.
void MakeTables(Database& database);

}  // namespace quilloservice
