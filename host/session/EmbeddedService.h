#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "moxcore/async/Future.h"
#include "quillohostkit/process/ChildProcess.h"

namespace quillohost {

/// A quillo-service of the host's own, on this machine, which ends with the host. Main thread.
class EmbeddedService {
public:
    /// Starts one that keeps its state in `data`. A Failure (SignIn) when it cannot be run.
    /// `onGone` is called on the main thread with the reason when a running service ends by itself.
    EmbeddedService(std::filesystem::path const& data,
                    std::function<void(std::string const& reason)> onGone);

    /// Stops it and waits for that; kills it when it takes too long.
    ~EmbeddedService();
    EmbeddedService(EmbeddedService const&) = delete;
    EmbeddedService& operator=(EmbeddedService const&) = delete;

    /// Its address, once it answers there. Fails with a Failure (SignIn) when it does not start.
    [[nodiscard]] moxcore::async::Future<std::string> Address() const {
        return address.GetFuture();
    }

    /// How to start the same service by hand, for a shell.
    [[nodiscard]] static std::string CommandLine(std::filesystem::path const& data);

private:
    void OnOutput(std::string const& line);
    void OnExit();

    std::function<void(std::string const&)> onGone;
    std::string complaint;  // the last line that it had to say
    moxcore::async::Promise<std::string> address;
    std::unique_ptr<quillohostkit::ChildProcess> process;
};

}  // namespace quillohost
