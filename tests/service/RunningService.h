#pragma once

#include <memory>
#include <string>
#include <thread>

#include "service/Options.h"
#include "service/Service.h"
#include "tests/service/TempDirectory.h"

namespace quilloservice::test {

/// A service in this process, on a free port and, unless the options name one, a directory of its
/// own.
class RunningService {
public:
    explicit RunningService(Options options = {}) : options_(std::move(options)) {
        if (options_.dataDirectory.empty()) options_.dataDirectory = directory_.path();
        options_.trustLocalUser = true;
        Start();
    }
    ~RunningService() { Stop(); }
    RunningService(RunningService const&) = delete;
    RunningService& operator=(RunningService const&) = delete;

    [[nodiscard]] int port() const { return service_->port(); }

    /// Ends it and starts another on the same data.
    void Restart() {
        Stop();
        Start();
    }

private:
    void Start() {
        service_ = std::make_unique<Service>(options_);
        thread_ = std::thread([this] { service_->Run(); });
    }

    void Stop() {
        service_->Stop();
        thread_.join();
        service_.reset();
    }

    TempDirectory directory_;
    Options options_;
    std::unique_ptr<Service> service_;
    std::thread thread_;
};

}  // namespace quilloservice::test
