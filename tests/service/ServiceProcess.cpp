#include "tests/service/ServiceProcess.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/service/TestStore.h"

namespace quilloservice::test {

ServiceProcess::ServiceProcess(std::vector<std::string> arguments,
                               std::function<void()> const& inChild) {
    arguments.insert(arguments.begin(), QUILLO_SERVICE_PROGRAM);
    auto data = std::find(arguments.begin(), arguments.end(), "--data");
    std::string database = arguments.end() - data < 2 ? "" : DatabaseFor(*(data + 1));
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    int in[2], out[2], err[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 ||
        ::pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    pid = ::fork();
    if (pid == 0) {
        ::dup2(in[0], STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        if (!database.empty()) ::setenv("QUILLO_DATABASE", database.c_str(), 1);
        if (inChild) inChild();
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    for (int end : {in[0], out[1], err[1]})
        ::close(end);
    input = in[1];
    output = out[0];
    errors = err[0];

    std::string line;
    for (char c; ::read(output, &c, 1) == 1 && c != '\n';)
        line += c;
    std::string const ready = "quillo-service listening on http://127.0.0.1:";
    if (line.starts_with(ready)) port = std::atoi(line.c_str() + ready.size());
}

ServiceProcess::~ServiceProcess() {
    if (pid > 0) {
        Signal(SIGKILL);
        Wait();
    }
    for (int end : {input, output, errors}) {
        if (end >= 0) ::close(end);
    }
}

void ServiceProcess::Signal(int signal) const {
    ::kill(pid, signal);
}

void ServiceProcess::CloseStdin() {
    ::close(input);
    input = -1;
}

int ServiceProcess::Wait() {
    int status = 0;
    ::waitpid(pid, &status, 0);
    pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ServiceProcess::ReadCommandLine() const {
    std::ifstream file("/proc/" + std::to_string(pid) + "/cmdline");
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string ServiceProcess::ReadErrors() const {
    std::string text;
    char buffer[4096];
    for (ssize_t count; (count = ::read(errors, buffer, sizeof(buffer))) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace quilloservice::test
