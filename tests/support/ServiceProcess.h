#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace testsupport {

/// The real service, as a program of its own on a loopback port, which it keeps over restarts. It
/// ends with this object, and also when the test program dies.
class ServiceProcess {
public:
    /// Starts it on the directory `data`, trusting the local user, with further `switches`; returns
    /// once it answers requests. Throws std::runtime_error when it does not start.
    explicit ServiceProcess(std::filesystem::path data,
                            std::vector<std::string> const& switches = {});
    ~ServiceProcess();
    ServiceProcess(ServiceProcess const&) = delete;
    ServiceProcess& operator=(ServiceProcess const&) = delete;

    /// "http://127.0.0.1:port".
    [[nodiscard]] std::string const& Address() const { return address; }

    /// Kills it (SIGKILL), as a power cut would, and waits until it is gone.
    void Kill();

    /// Starts it again on its data, after Kill, with these switches.
    void Restart(std::vector<std::string> const& switches = {});

private:
    std::filesystem::path const data;
    std::string address;
    pid_t process = -1;
    int input = -1;  // its end of standard input keeps it running
};

}  // namespace testsupport
