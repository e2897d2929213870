#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace quilloservice::test {

/// The real program, in a process of its own.
class ServiceProcess {
public:
    /// Starts it and returns once it has said that it is ready, or ended. `inChild` runs in the new
    /// process before the program does.
    explicit ServiceProcess(std::vector<std::string> arguments,
                            std::function<void()> const& inChild = {});
    ~ServiceProcess();  ///< kills it
    ServiceProcess(ServiceProcess const&) = delete;
    ServiceProcess& operator=(ServiceProcess const&) = delete;

    /// From its first line; 0 when it ended instead.
    [[nodiscard]] int GetPort() const { return port; }

    void Signal(int signal) const;
    void CloseStdin();

    /// Waits for its end; returns its exit status, or 128 and more for a signal.
    int Wait();

    /// What it wrote to standard error; after `Wait`.
    [[nodiscard]] std::string Complaint() const;

private:
    pid_t pid = -1;
    int input = -1;
    int output = -1;
    int errors = -1;
    int port = 0;
};

}  // namespace quilloservice::test
