#include "quillohostkit/process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/utility/Descriptor.h"
#include "quillohostkit/process/Signals.h"

namespace quillohostkit {

using moxcore::utility::Descriptor;
namespace {

namespace fs = std::filesystem;

[[noreturn]] void ThrowErrno(int error, std::string const& what) {
    throw std::system_error(error, std::generic_category(), what);
}

/// Calls `operation` again where a signal has ended it; what it returns else.
template <class Operation>
auto Uninterrupted(Operation operation) {
    auto result = operation();
    while (result < 0 && errno == EINTR)
        result = operation();
    return result;
}

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) ThrowErrno(errno, "pipe");
        read = Descriptor(ends[0]);
        write = Descriptor(ends[1]);
    }
    Descriptor read;
    Descriptor write;
};

/// Cuts what is read into lines. A line feed ends one, and so does a carriage return, with which
/// programs write their progress over and over; the last one need not end.
class LineReader {
public:
    explicit LineReader(std::function<void(std::string)> onLine) : onLine(std::move(onLine)) {}

    /// Takes what `file` has; false at its end.
    bool Read(int file) {
        std::array<char, 4096> bytes{};
        auto const count = Uninterrupted([&] { return read(file, bytes.data(), bytes.size()); });
        if (count <= 0) {
            if (!line.empty()) onLine(std::exchange(line, {}));
            return false;
        }
        for (char c : std::string_view(bytes.data(), static_cast<std::size_t>(count))) {
            bool const isSecondOfTwo = std::exchange(wasReturn, c == '\r') && c == '\n';
            if (c != '\n' && c != '\r')
                line += c;
            else if (!isSecondOfTwo)
                onLine(std::exchange(line, {}));
        }
        return true;
    }

private:
    std::function<void(std::string)> onLine;
    std::string line;
    bool wasReturn = false;  // the last byte
};

/// Runs in the new process until it becomes the program: only calls that are allowed after a fork
/// in a program with several threads. Ends the process on failure.
struct Launch {
    char const* program;
    char* const* arguments;
    pid_t parent;
    int input, output, error, report;

    [[noreturn]] void Run() const {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);  // the host died before the request
        if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
            dup2(error, STDERR_FILENO) >= 0) {
            GiveSignalsBack();
            execv(program, arguments);
        }
        int const reason = errno;
        [[maybe_unused]] auto const written = write(report, &reason, sizeof reason);
        _exit(127);
    }
};

}  // namespace

fs::path FindProgram(std::string const& name) {
    std::error_code ignored;
    std::vector<fs::path> directories{fs::read_symlink("/proc/self/exe", ignored).parent_path()};
    char const* const path = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe)
    std::istringstream list(path ? path : "");
    for (std::string directory; std::getline(list, directory, ':');)
        directories.emplace_back(directory);
    for (auto const& directory : directories) {
        fs::path candidate = directory / name;
        if (fs::is_regular_file(candidate, ignored) && access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return {};
}

/// The program while it runs; shared with the thread that reads what it says.
class ChildProcess::Running {
public:
    Running(fs::path const& program, std::vector<std::string> const& arguments, Input inputKind) {
        Pipe in;
        if (inputKind == Input::Held) input = std::move(in.write);
        in.write.Close();
        Start(program, arguments, in.read.GetNumber());
    }

    Running(fs::path const& program, std::vector<std::string> const& arguments, int inputFile) {
        Start(program, arguments, inputFile);
    }

    /// Reads until the program has closed both outputs and ended.
    ExitStatus ReadAndReap(std::function<void(std::string)> onOutput,
                           std::function<void(std::string)> onError) {
        std::array<LineReader, 2> readers{LineReader(std::move(onOutput)),
                                          LineReader(std::move(onError))};
        std::array<pollfd, 2> files{pollfd{output.GetNumber(), POLLIN, 0},
                                    pollfd{error.GetNumber(), POLLIN, 0}};
        while (files[0].fd >= 0 || files[1].fd >= 0) {
            if (poll(files.data(), files.size(), -1) < 0) continue;
            for (std::size_t i = 0; i < files.size(); ++i)
                if (files[i].revents != 0 && !readers[i].Read(files[i].fd)) files[i].fd = -1;
        }
        siginfo_t info{};
        Uninterrupted(
            [&] { return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT); });
        std::lock_guard lock(mutex);
        int status = 0;
        Uninterrupted([&] { return waitpid(process, &status, 0); });
        ended = true;
        changed.notify_all();
        if (WIFSIGNALED(status)) return {0, WTERMSIG(status)};
        return {WEXITSTATUS(status), 0};
    }

    void Kill() {
        std::lock_guard lock(mutex);
        if (!ended) kill(process, SIGKILL);
    }

    void CloseInputAndWait(std::chrono::milliseconds patience) {
        input.Close();
        std::unique_lock lock(mutex);
        changed.wait_for(lock, patience, [this] { return ended; });
    }

private:
    void Start(fs::path const& program, std::vector<std::string> const& arguments, int inputFile) {
        Pipe out, err, report;
        output = std::move(out.read);
        error = std::move(err.read);

        std::vector<std::string> words{program.string()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        pointers.reserve(words.size() + 1);
        for (auto& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);

        Launch const launch{words.front().c_str(),
                            pointers.data(),
                            getpid(),
                            inputFile,
                            out.write.GetNumber(),
                            err.write.GetNumber(),
                            report.write.GetNumber()};
        process = fork();
        if (process < 0) ThrowErrno(errno, "fork");
        if (process == 0) launch.Run();

        report.write.Close();
        int reason = 0;
        if (Uninterrupted([&] { return read(report.read.GetNumber(), &reason, sizeof reason); }) ==
            sizeof reason) {
            Uninterrupted([&] { return waitpid(process, nullptr, 0); });
            ThrowErrno(reason, "cannot run " + program.string());
        }
    }

    Descriptor input;          // main thread
    Descriptor output, error;  // the reading thread's, once it runs
    pid_t process = -1;
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;  // guarded by mutex; from then on `process` may name another
};

ChildProcess::ChildProcess(fs::path const& program, std::vector<std::string> const& arguments,
                           Input input, Hooks newHooks)
    : ChildProcess(std::make_shared<Running>(program, arguments, input), std::move(newHooks)) {}

ChildProcess::ChildProcess(fs::path const& program, std::vector<std::string> const& arguments,
                           int input, Hooks newHooks)
    : ChildProcess(std::make_shared<Running>(program, arguments, input), std::move(newHooks)) {}

ChildProcess::ChildProcess(std::shared_ptr<Running> newRunning, Hooks newHooks)
    : hooks(std::make_shared<Hooks>(std::move(newHooks))), running(std::move(newRunning)) {
    reader = std::thread([running = running, weak = std::weak_ptr<Hooks>(hooks)] {
        auto const post = [&weak](auto call) {
            moxcore::threads::AsyncCallFromMainThread(
                [weak, call = std::move(call)] {
                    if (auto const alive = weak.lock()) call(*alive);
                },
                0);
        };
        auto const lines = [&post](std::function<void(std::string const&)> Hooks::*hook) {
            return [&post, hook](std::string line) {
                post([hook, line = std::move(line)](Hooks& target) {
                    if (target.*hook) (target.*hook)(line);
                });
            };
        };
        auto const status = running->ReadAndReap(lines(&Hooks::onOutput), lines(&Hooks::onError));
        post([status](Hooks& target) {
            if (target.onExit) target.onExit(status);
        });
    });
}

ChildProcess::~ChildProcess() {
    running->Kill();
    reader.join();
}

void ChildProcess::StopByInput(std::chrono::milliseconds patience) {
    running->CloseInputAndWait(patience);
}

}  // namespace quillohostkit
