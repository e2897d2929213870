#include "host/session/EmbeddedService.h"

#include <utility>
#include <vector>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

constexpr char const* kProgram = "quillo-service";
constexpr char const* kReady = "quillo-service listening on ";
constexpr std::chrono::seconds kPatience{10};

std::filesystem::path FindService() {
    auto program = quillohostkit::FindProgram(kProgram);
    if (program.empty())
        throw quillohostkit::Failure(
            quillohostkit::FailureKind::SignIn,
            Text("$$$/Vistrel/quillo-host/Service/Missing={program} is neither beside quillo-host "
                 "nor on PATH; install it, or name a service with --service.",
                 {{"program", kProgram}}));
    return program;
}

}  // namespace

EmbeddedService::EmbeddedService(std::filesystem::path const& data,
                                 std::function<void(std::string const&)> onGone)
    : onGone(std::move(onGone)),
      process(std::make_unique<quillohostkit::ChildProcess>(
          FindService(),
          std::vector<std::string>{"--data", data.string(), "--trust-local-user",
                                   "--stop-with-stdin", "--database", "none"},
          quillohostkit::ChildProcess::Input::Held,
          quillohostkit::ChildProcess::Hooks{.onOutput = [this](auto& line) { OnOutput(line); },
                                             .onError = [this](auto& line) { complaint = line; },
                                             .onExit = [this](auto) { OnExit(); }})) {}

EmbeddedService::~EmbeddedService() {
    process->StopByInput(kPatience);
}

void EmbeddedService::OnOutput(std::string const& line) {
    if (line.starts_with(kReady)) address.SetValue(line.substr(std::string(kReady).size()));
}

void EmbeddedService::OnExit() {
    std::string const reason = complaint.empty()
                                   ? Text("$$$/Vistrel/quillo-host/Service/Silent=it said nothing")
                                   : complaint;
    if (!address.SetException(std::make_exception_ptr(
            quillohostkit::Failure(quillohostkit::FailureKind::SignIn,
                                   Text("$$$/Vistrel/quillo-host/Service/NotStarted=The host's own "
                                        "quillo-service did not start: {reason}",
                                        {{"reason", reason}})))))
        onGone(reason);
}

std::string EmbeddedService::CommandLine(std::filesystem::path const& data) {
    std::string quoted;
    for (char c : data.string())
        quoted += c == '\'' ? R"('\'')" : std::string(1, c);
    return std::string(kProgram) + " --data '" + quoted + "' --trust-local-user";
}

}  // namespace quillohost
