#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <thread>

#include "service/Options.h"
#include "service/Service.h"
#include "service/store/DataDirectory.h"
#include "service/store/postgresql/Migration.h"
#include "service/store/postgresql/PostgresqlStore.h"
#include "service/store/sqlite/SqliteStore.h"

namespace {

using namespace quilloservice;

/// Waits for a stop signal, the end of standard input (if `stopWithStdin`), or `finished` to become
/// readable, but for `most` at most; a negative one is no limit.
void WaitForEnd(int signals, bool stopWithStdin, int finished,
                std::chrono::milliseconds most = std::chrono::milliseconds(-1)) {
    pollfd sources[] = {{signals, POLLIN, 0},
                        {finished, POLLIN, 0},
                        {stopWithStdin ? STDIN_FILENO : -1, POLLIN, 0}};
    auto const until = std::chrono::steady_clock::now() + most;
    for (;;) {
        auto const left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (most.count() >= 0 && left.count() <= 0) return;
        int const ready =
            ::poll(sources, 3, most.count() < 0 ? -1 : static_cast<int>(left.count()));
        if (ready <= 0) continue;
        if (sources[0].revents != 0 || sources[1].revents != 0) return;
        char ignored[512];
        if (sources[2].revents != 0 && ::read(STDIN_FILENO, ignored, sizeof(ignored)) <= 0) return;
    }
}

/// Raises the soft limit of descriptors to the hard limit. The soft limit is often low for the sake
/// of programs that use select().
void AllowManyDescriptors() {
    rlimit descriptors{};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) != 0) return;
    descriptors.rlim_cur = descriptors.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &descriptors);
}

void Serve(Options const& options) {
    // Before the first thread starts, since threads inherit the mask.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    int signals = ::signalfd(-1, &stopSignals, SFD_CLOEXEC | SFD_NONBLOCK);
    int finished = ::eventfd(0, EFD_CLOEXEC);
    AllowManyDescriptors();
    // A write beyond the file size limit then fails like one on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);

    Service service(options);
    std::thread server([&] {
        service.Run();
        ::eventfd_write(finished, 1);
    });
    std::printf("quillo-service listening on %s\n", service.GetAddress().c_str());
    std::fflush(stdout);
    WaitForEnd(signals, options.stopWithStdin, finished);
    if (options.drain.count() > 0) {
        signalfd_siginfo first{};
        [[maybe_unused]] auto const taken = ::read(signals, &first, sizeof(first));
        service.Drain();
        WaitForEnd(signals, false, finished, options.drain);
    }
    service.Stop();
    server.join();
    ::close(finished);
    ::close(signals);
}

void Migrate(Options const& options) {
    DataDirectory directory(options.dataDirectory);
    SqliteStore source(directory.GetStorePath());
    PostgresqlStore target(options.database);
    CopyReport report = CopyRecords(source, target);
    if (report.wasCopied) {
        std::printf("The records of %s are in %s already.\n", options.dataDirectory.c_str(),
                    target.GetName().c_str());
        return;
    }
    for (auto const& [table, rows] : report.rows)
        std::printf("%12lld  %s\n", static_cast<long long>(rows), table.c_str());
    std::printf("Copied to %s. The movies stay in %s.\n", target.GetName().c_str(),
                options.dataDirectory.c_str());
}

/// Removes the database's address, which may contain a password, from what other users see of this
/// process.
void HideDatabase(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--database") == 0) {
            std::memset(argv[i + 1], '*', std::strlen(argv[i + 1]));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        std::vector<std::string> const arguments(argv + 1, argv + argc);
        HideDatabase(argc, argv);
        Options options = ParseOptions(
            arguments,
            std::getenv("QUILLO_DATABASE"));  // NOLINT(concurrency-mt-unsafe): one thread
        if (options.help) {
            std::fputs(kHelp, stdout);
            return 0;
        }
        options.migrate ? Migrate(options) : Serve(options);
        return 0;
    } catch (UsageError const& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        return 2;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        return 1;
    }
}
