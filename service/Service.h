#pragma once

#include <memory>
#include <string>

namespace quilloservice {

struct Options;

/// The service: data directory, store, routes and server.
class Service {
public:
    /// Opens the data directory, completes interrupted publications, and listens. Throws
    /// std::exception with a message for the user.
    explicit Service(Options const& options);
    ~Service();

    /// "http://127.0.0.1:PORT"
    [[nodiscard]] std::string const& GetAddress() const;
    [[nodiscard]] int GetPort() const;

    /// Serves requests until `Stop`. Call once.
    void Run();

    /// Makes `Run` return once the requests have ended that are being received or served; takes no
    /// new connections. Any thread, during `Run`.
    void Drain();

    /// Makes `Run` return after the running requests. Any thread.
    void Stop();

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

}  // namespace quilloservice
