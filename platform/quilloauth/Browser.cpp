#include "quilloauth/Browser.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "moxcore/utility/Descriptor.h"
#include "moxcore/utility/NoDestructor.h"
#include "quillocommon/WorkerThread.h"

namespace quilloauth {

using moxcore::utility::Descriptor;
namespace {

/// The opener that is set, empty for the desktop's. Never destroyed: somebody may sign in while the
/// process ends.
class CurrentOpener {
public:
    static CurrentOpener& Get() {
        static moxcore::utility::NoDestructor<CurrentOpener> current;
        return *current;
    }

    void Set(BrowserOpener newOpener) {
        std::lock_guard lock(mutex);
        opener.swap(newOpener);
    }

    [[nodiscard]] BrowserOpener Copy() {
        std::lock_guard lock(mutex);
        return opener;
    }

private:
    std::mutex mutex;
    BrowserOpener opener;  // guarded by mutex
};

/// How a new program begins: silent, with none of this one's blocked signals, and as no part of the
/// terminal's job.
class LaunchTerms {
public:
    LaunchTerms() {
        posix_spawn_file_actions_init(&actions);
        for (int const file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&actions, file, "/dev/null", O_RDWR, 0);
        sigset_t none;
        sigset_t usual;
        sigemptyset(&none);
        sigemptyset(&usual);
        sigaddset(&usual, SIGPIPE);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &usual);
        posix_spawnattr_setflags(
            &attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~LaunchTerms() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    LaunchTerms(LaunchTerms const&) = delete;
    LaunchTerms& operator=(LaunchTerms const&) = delete;

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

/// Sleeps until the process has ended; false when `stop` came first.
bool AwaitEnd(pid_t process, std::stop_token const& stop) {
    // By its number: this C library declares pidfd_open for C alone.
    Descriptor const ended(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    Descriptor const stopped(eventfd(0, EFD_CLOEXEC));
    if (!ended || !stopped) return false;
    std::stop_callback const onStop(stop, [&stopped] { eventfd_write(stopped.GetNumber(), 1); });
    pollfd files[] = {{ended.GetNumber(), POLLIN, 0}, {stopped.GetNumber(), POLLIN, 0}};
    while (poll(files, std::size(files), -1) < 0) {
    }
    return files[0].revents != 0;
}

/// Waits for the programs that have been launched, each on a thread of its own: an opener may run
/// as long as the browser that it has started.
class Launches {
public:
    /// Never destroyed: somebody may sign in while the process ends. What still runs then is not
    /// waited for.
    static Launches& Get() {
        struct StopAtExit {
            Launches& launches;
            ~StopAtExit() { launches.Stop(); }
        };
        static moxcore::utility::NoDestructor<Launches> launches;
        static StopAtExit const stopAtExit{*launches};
        return *launches;
    }

    void Watch(pid_t process, std::string const& program, BrowserFailure const& onFailure) {
        std::list<Launch> gone;  // joined after the lock
        std::lock_guard lock(mutex);
        if (stopped) return;
        for (auto at = launches.begin(); at != launches.end();) {
            auto const next = std::next(at);
            if (*at->hasEnded) gone.splice(gone.end(), launches, at);
            at = next;
        }
        auto const hasEnded = std::make_shared<std::atomic<bool>>(false);
        auto watch = [process, program, onFailure, hasEnded](std::stop_token const& stop) {
            int status = 0;
            if (AwaitEnd(process, stop) && waitpid(process, &status, 0) == process && status != 0)
                onFailure(program +
                          (WIFEXITED(status)
                               ? " ended with exit status " + std::to_string(WEXITSTATUS(status))
                               : " was ended by signal " + std::to_string(WTERMSIG(status))));
            *hasEnded = true;
        };
        launches.push_back({hasEnded, quillocommon::StartWorkerThread(std::move(watch))});
    }

private:
    struct Launch {
        std::shared_ptr<std::atomic<bool>> hasEnded;
        std::jthread thread;
    };

    void Stop() {
        std::list<Launch> ending;
        std::lock_guard lock(mutex);
        stopped = true;
        ending.swap(launches);
    }

    std::mutex mutex;
    bool stopped = false;        // guarded by mutex
    std::list<Launch> launches;  // guarded by mutex
};

}  // namespace

void SetBrowserOpener(BrowserOpener opener) {
    CurrentOpener::Get().Set(std::move(opener));
}

void OpenBrowser(std::string const& url, BrowserFailure const& onFailure) {
    if (auto const opener = CurrentOpener::Get().Copy()) return opener(url, onFailure);
    OpenWithProgram(kDesktopOpener, url, onFailure);
}

void OpenWithProgram(std::string const& program, std::string const& url,
                     BrowserFailure const& onFailure) {
    std::string name = program;
    std::string argument = url;
    char* const arguments[] = {name.data(), argument.data(), nullptr};
    LaunchTerms const terms;
    pid_t process = -1;
    int const error =
        posix_spawnp(&process, name.c_str(), &terms.actions, &terms.attributes, arguments, environ);
    if (error != 0)
        return onFailure("cannot run " + program + " (" + std::generic_category().message(error) +
                         ")");
    Launches::Get().Watch(process, program, onFailure);
}

}  // namespace quilloauth
