#pragma once

#include <stdexcept>
#include <string>

namespace quillohost {

/// The program's exit codes, by the kind of failure.
enum class ExitCode {
    Done = 0,
    Other = 1,  ///< the host's own: its files, its output
    Usage = 2,
    SignIn = 3,  ///< also a service that cannot be reached
    Location = 4,
    Export = 5,
    Upload = 6,
    Link = 7,
    Cancelled = 8,  ///< by the user, in a dialog
    Interrupted = 130,
};

/// Why a command ends without having done its work. `what` is one line for the user: what failed
/// and what to do about it.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, std::string const& message)
        : std::runtime_error(message), exitCode(exitCode) {}

    [[nodiscard]] ExitCode GetExitCode() const noexcept { return exitCode; }

private:
    ExitCode exitCode;
};

}  // namespace quillohost
