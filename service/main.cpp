#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <thread>

#include "service/Options.h"
#include "service/Service.h"

namespace {

using namespace quilloservice;

/// Waits for a stop signal, the end of standard input (if `stopWithStdin`), or `finished` to become
/// readable.
void WaitForEnd(int signals, bool stopWithStdin, int finished) {
    pollfd sources[] = {{signals, POLLIN, 0},
                        {finished, POLLIN, 0},
                        {stopWithStdin ? STDIN_FILENO : -1, POLLIN, 0}};
    for (;;) {
        if (::poll(sources, 3, -1) < 0) continue;
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
    int signals = ::signalfd(-1, &stopSignals, SFD_CLOEXEC);
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
    service.Stop();
    server.join();
    ::close(finished);
    ::close(signals);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options options = ParseOptions({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(kHelp, stdout);
            return 0;
        }
        Serve(options);
        return 0;
    } catch (UsageError const& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        return 2;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        return 1;
    }
}
