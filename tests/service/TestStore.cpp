#include "tests/service/TestStore.h"

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "service/store/postgresql/PostgresqlStore.h"
#include "service/store/sqlite/SqliteStore.h"

namespace quilloservice::test {

PostgresqlServer& Server() {
    static PostgresqlServer server;
    return server;
}

std::string DatabaseFor(std::string const& dataDirectory) {
    char const* engine = std::getenv("QUILLO_TEST_ENGINE");
    if (engine == nullptr || engine != std::string_view("postgresql")) return "";
    return Server().MakeSchema("s" + std::to_string(std::hash<std::string>()(dataDirectory)));
}

std::unique_ptr<Store> OpenStore(std::string const& dataDirectory) {
    std::string database = DatabaseFor(dataDirectory);
    if (!database.empty()) return std::make_unique<PostgresqlStore>(database);
    return std::make_unique<SqliteStore>(dataDirectory + "/store.sqlite");
}

}  // namespace quilloservice::test
