#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace quilloservice::test {

/// The program quillo-service in a process of its own.
class ServiceProcess {
public:
    /// Starts the program and waits until it is ready or has ended. `inChild` runs in the new
    /// process before exec.
    explicit ServiceProcess(std::vector<std::string> arguments,
                            std::function<void()> const& inChild = {});
    ~ServiceProcess();  ///< kills the process
    ServiceProcess(ServiceProcess const&) = delete;
    ServiceProcess& operator=(ServiceProcess const&) = delete;

    /// The port it printed; 0 if it ended instead.
    [[nodiscard]] int GetPort() const { return port; }

    void Signal(int signal) const;
    void CloseStdin();

    /// Waits for its end; returns its exit status, or 128 plus the signal.
    int Wait();

    /// Its arguments, as other users see them.
    [[nodiscard]] std::string ReadCommandLine() const;

    /// Its output on standard error. Call after `Wait`.
    [[nodiscard]] std::string ReadErrors() const;

private:
    pid_t pid = -1;
    int input = -1;
    int output = -1;
    int errors = -1;
    int port = 0;
};

}  // namespace quilloservice::test
