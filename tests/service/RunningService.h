#pragma once

#include <memory>
#include <string>
#include <thread>

#include "service/Options.h"
#include "service/Service.h"
#include "tests/service/TempDirectory.h"

namespace quilloservice::test {

/// A service in this process, on a free port and a directory of its own.
class RunningService {
public:
    explicit RunningService(Options options = {}) {
        options.dataDirectory = directory_.path();
        options.trustLocalUser = true;
        service_ = std::make_unique<Service>(options);
        thread_ = std::thread([this] { service_->Run(); });
    }
    ~RunningService() {
        service_->Stop();
        thread_.join();
    }
    RunningService(const RunningService&) = delete;
    RunningService& operator=(const RunningService&) = delete;

    [[nodiscard]] int port() const { return service_->port(); }

private:
    TempDirectory directory_;
    std::unique_ptr<Service> service_;
    std::thread thread_;
};

}  // namespace quilloservice::test
