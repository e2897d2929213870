#pragma once

#include <memory>
#include <string>

#include "service/store/Store.h"
#include "tests/service/PostgresqlServer.h"

namespace quilloservice::test {

/// The server of this test program, started by the first call.
PostgresqlServer& Server();

/// The address of the database that belongs to a data directory: with QUILLO_TEST_ENGINE=postgresql
/// in the environment a schema of its own on `Server`; else empty, for SQLite.
std::string DatabaseFor(std::string const& dataDirectory);

/// Opens the store that a service with this data directory has.
std::unique_ptr<Store> OpenStore(std::string const& dataDirectory);

}  // namespace quilloservice::test
