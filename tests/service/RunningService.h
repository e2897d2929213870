#pragma once

#include <memory>
#include <string>
#include <thread>

#include "service/Options.h"
#include "service/Service.h"
#include "tests/service/TempDirectory.h"
#include "tests/service/TestStore.h"

namespace quilloservice::test {

/// A service in this process, on a free port. Uses a temporary data directory unless the options
/// name one, and the engine under test.
class RunningService {
public:
    explicit RunningService(Options given = {}) : options(std::move(given)) {
        if (options.dataDirectory.empty()) options.dataDirectory = directory.GetPath();
        if (options.database.empty()) options.database = DatabaseFor(options.dataDirectory);
        options.trustLocalUser = true;
        Start();
    }
    ~RunningService() { Stop(); }
    RunningService(RunningService const&) = delete;
    RunningService& operator=(RunningService const&) = delete;

    [[nodiscard]] int GetPort() const { return service->GetPort(); }

    /// Stops the service and starts a new one with the same data.
    void Restart() {
        Stop();
        Start();
    }

private:
    void Start() {
        service = std::make_unique<Service>(options);
        thread = std::thread([this] { service->Run(); });
    }

    void Stop() {
        service->Stop();
        thread.join();
        service.reset();
    }

    TempDirectory directory;
    Options options;
    std::unique_ptr<Service> service;
    std::thread thread;
};

}  // namespace quilloservice::test
