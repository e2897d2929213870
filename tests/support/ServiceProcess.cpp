#include "tests/support/ServiceProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace testsupport {
namespace {

constexpr std::string_view kReady = "quillo-service listening on ";

struct Pipe {
    int reading = -1;
    int writing = -1;

    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe to be had");
        reading = ends[0];
        writing = ends[1];
    }
};

std::string ReadLine(int descriptor) {
    std::string line;
    char c = 0;
    while (read(descriptor, &c, 1) == 1 && c != '\n')
        line += c;
    return line;
}

}  // namespace

ServiceProcess::ServiceProcess(std::filesystem::path data, std::vector<std::string> const& switches)
    : data(std::move(data)) {
    Restart(switches);
}

ServiceProcess::~ServiceProcess() {
    if (process < 0) return;
    close(input);
    waitpid(process, nullptr, 0);
}

void ServiceProcess::Restart(std::vector<std::string> const& switches) {
    std::vector<std::string> words{QUILLO_SERVICE_PROGRAM, "--data", data.string(),
                                   "--trust-local-user", "--stop-with-stdin"};
    words.insert(words.end(), switches.begin(), switches.end());
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    Pipe const in;
    Pipe const out;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.reading, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.writing, STDOUT_FILENO);
    int const error =
        posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in.reading);
    close(out.writing);
    input = in.writing;

    auto const line = error == 0 ? ReadLine(out.reading) : std::string();
    close(out.reading);
    if (!line.starts_with(kReady)) {
        close(input);
        if (error == 0) waitpid(process, nullptr, 0);
        process = -1;
        throw std::runtime_error(words[0] + " does not start");
    }
    address = line.substr(kReady.size());
}

void ServiceProcess::Kill() {
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    close(input);
    process = -1;
}

}  // namespace testsupport
