#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// How a program ended.
struct ExitStatus {
    int code = 0;
    int signal = 0;  ///< that ended it; 0: none

    [[nodiscard]] bool IsSuccess() const { return code == 0 && signal == 0; }
};

/// Where the program `name` is: beside this one's own file, else on $PATH; empty when it is on
/// neither.
[[nodiscard]] QUILLOHOSTKIT_API std::filesystem::path FindProgram(std::string const& name);

/// A program that runs beside this one, started without a shell. It is in a process group of its
/// own, so that a terminal's Ctrl-C reaches only the host, and it is killed when the host dies,
/// however that comes about. Main thread only; the host's main thread must outlive it.
class QUILLOHOSTKIT_API ChildProcess {
public:
    /// Called on the main thread, while the object lives.
    struct Hooks {
        std::function<void(std::string const& line)> onOutput;  ///< a line of its standard output
        std::function<void(std::string const& line)> onError;   ///< a line of its standard error
        std::function<void(ExitStatus)> onExit;                 ///< once, after the last line
    };

    enum class Input {
        Nothing,  ///< it reads the end of its input at once
        Held,     ///< it reads the end when the host lets go, or dies
    };

    /// Starts `program`. std::system_error when it cannot be run.
    ChildProcess(std::filesystem::path const& program, std::vector<std::string> const& arguments,
                 Input input, Hooks hooks);

    /// The same, with the open file `input`, which stays the caller's, as its standard input.
    ChildProcess(std::filesystem::path const& program, std::vector<std::string> const& arguments,
                 int input, Hooks hooks);

    /// Kills it if it still runs. It is gone afterwards.
    ~ChildProcess();
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    /// Ends its input and waits until it has ended, at most `patience`.
    void StopByInput(std::chrono::milliseconds patience);

private:
    class Running;

    ChildProcess(std::shared_ptr<Running> running, Hooks hooks);

    std::shared_ptr<Hooks> hooks;
    std::shared_ptr<Running> running;
    std::thread reader;
};

}  // namespace quillohostkit
