#include "tests/service/PostgresqlServer.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <pqxx/pqxx>
#include <stdexcept>
#include <vector>

namespace quilloservice::test {

namespace {

/// The user whom the server runs as: PostgreSQL refuses to run as root.
passwd const* ServerUser() {
    return ::geteuid() == 0 ? ::getpwnam("postgres") : ::getpwuid(::geteuid());
}

/// Starts a program of PostgreSQL, with its standard error in `errors` if that is no -1.
pid_t Spawn(std::vector<std::string> arguments, int errors) {
    passwd const* user = ServerUser();
    if (user == nullptr) throw std::runtime_error("there is no user postgres");
    arguments[0] = std::string(QUILLO_POSTGRESQL_PROGRAMS) + "/" + arguments[0];
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_t parent = ::getpid();
    pid_t pid = ::fork();
    if (pid != 0) return pid;
    int silent = ::open("/dev/null", O_RDWR);
    ::dup2(silent, STDIN_FILENO);
    ::dup2(silent, STDOUT_FILENO);
    ::dup2(errors >= 0 ? errors : silent, STDERR_FILENO);
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(user->pw_gid) != 0 ||
                             ::setuid(user->pw_uid) != 0)) {
        ::_exit(126);
    }
    ::prctl(PR_SET_PDEATHSIG, SIGQUIT);
    if (::getppid() != parent || ::chdir("/") != 0) ::_exit(126);
    ::execv(argv[0], argv.data());
    ::_exit(127);
}

int WaitFor(pid_t pid) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status;
}

}  // namespace

PostgresqlServer::PostgresqlServer() {
    std::string pattern = std::filesystem::temp_directory_path() / "quillo-postgresql-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    directory = pattern;
    if (::chown(directory.c_str(), ServerUser()->pw_uid, ServerUser()->pw_gid) != 0 ||
        WaitFor(Spawn({"initdb", "--pgdata", directory + "/data", "--username", "quillo", "--auth",
                       "trust", "--encoding", "UTF8", "--no-locale", "--no-sync"},
                      -1)) != 0) {
        throw std::runtime_error("initdb failed");
    }
    Start();
}

PostgresqlServer::~PostgresqlServer() {
    if (pid > 0) Stop();
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

void PostgresqlServer::Start() {
    int log[2];
    if (::pipe2(log, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    pid = Spawn({"postgres", "-D", directory + "/data", "-k", directory, "-c", "listen_addresses=",
                 "-c", "fsync=off", "-c", "logging_collector=off", "-c", "log_destination=stderr"},
                log[1]);
    ::close(log[1]);
    std::string text;
    for (char c; text.find("ready to accept connections") == std::string::npos; text += c) {
        if (::read(log[0], &c, 1) != 1) throw std::runtime_error("postgres ended: " + text);
    }
    // What it writes from here on is not read; it ignores SIGPIPE.
    ::close(log[0]);
}

void PostgresqlServer::Stop() {
    ::kill(pid, SIGINT);  // ends the connections
    WaitFor(pid);
    pid = -1;
}

std::string PostgresqlServer::MakeSchema(std::string const& name) {
    std::string address = "postgresql:///postgres?host=" + directory + "&user=quillo";
    pqxx::connection connection(address);
    pqxx::quiet_errorhandler quiet(connection);
    pqxx::nontransaction(connection).exec("CREATE SCHEMA IF NOT EXISTS " + name);
    return address + "&options=-csearch_path%3D" + name;
}

}  // namespace quilloservice::test
