#pragma once

#include <memory>
#include <string>

namespace quilloservice {

struct Options;

/// The whole service: its data directory, its store, its routes and its server.
class Service {
public:
    /// Opens the data directory, repairs what an earlier process left half done, and listens.
    /// Throws std::exception with a message for the user when it cannot.
    explicit Service(Options const& options);
    ~Service();

    /// "http://127.0.0.1:PORT"
    [[nodiscard]] std::string const& GetAddress() const;
    [[nodiscard]] int GetPort() const;

    /// Answers requests until `Stop`. Once.
    void Run();

    /// Has `Run` return once the running requests are finished. Any thread.
    void Stop();

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

}  // namespace quilloservice
