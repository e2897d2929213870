#pragma once

#include <sys/types.h>

#include <string>

namespace quilloservice::test {

/// A PostgreSQL server in a temporary directory, reached by a socket there. Ends with this process.
class PostgresqlServer {
public:
    PostgresqlServer();
    ~PostgresqlServer();
    PostgresqlServer(PostgresqlServer const&) = delete;
    PostgresqlServer& operator=(PostgresqlServer const&) = delete;

    void Start();
    void Stop();

    /// The address of a schema, which is created if it is missing.
    std::string MakeSchema(std::string const& name);

private:
    std::string directory;
    pid_t pid = -1;
};

}  // namespace quilloservice::test
