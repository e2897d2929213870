// quillo-host: a window, or a command.

#include <cstdio>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/DestinationFinder.h"
#include "host/Failure.h"
#include "host/HostFiles.h"
#include "host/LocationsCommand.h"
#include "host/MainLoop.h"
#include "host/OneLine.h"
#include "host/Options.h"
#include "host/ProgressDisplay.h"
#include "host/Session.h"
#include "host/ShareCommand.h"
#include "host/TraceCommand.h"
#include "host/editor/ChooseLocationCommand.h"
#include "host/editor/RunEditor.h"

namespace {

using namespace quillohost;

/// A Failure when standard output does not take it.
void Print(std::string const& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw Failure(ExitCode::Other, "Cannot write to standard output.");
}

void Share(Options const& options, MainLoop& loop, ProgressDisplay& display) {
    ShareCommand command(options, loop, display);
    auto const result = command.Run();
    display.Tell("Shared as version " + std::to_string(result.version) +
                 (result.isNewLink ? " under a new link" : " under the link it had"));
    if (auto const hint = command.HowToOpen(result.link); !hint.empty()) display.Tell(hint);
    if (!options.json) return Print(result.link + '\n');
    Print(nlohmann::ordered_json{{"link", result.link},
                                 {"link_id", result.linkID},
                                 {"asset_id", result.assetID},
                                 {"version_stack_id", result.versionStackID},
                                 {"folder_id", result.folderID},
                                 {"folder_path", result.folderPath},
                                 {"version", result.version},
                                 {"sha256", result.exported.sha256},
                                 {"bytes", result.exported.bytes},
                                 {"new_link", result.isNewLink}}
              .dump(2, ' ', false, nlohmann::json::error_handler_t::replace) +
          '\n');
}

void ChooseLocation(Options const& options, MainLoop& loop, ProgressDisplay& display) {
    auto const chosen = editor::ChooseLocation(options, loop, display);
    auto const id = chosen.FolderID().AsStdString();
    if (!options.json) return Print(OneLine(chosen.path) + '\n' + id + '\n');
    Print(nlohmann::ordered_json{{"folder_id", id}, {"folder_path", chosen.path}}.dump(2) + '\n');
}

void SignIn(Session& session) {
    auto const user = session.SignIn();
    Print("Signed in to " + session.Service().Address() + " as " + OneLine(NameOf(*user)) + ".\n");
}

void SignOut(Session& session) {
    session.SignOut();
    Print("Signed out of " + session.Service().Address() + ".\n");
}

void RunCommand(Options const& options) {
    MainLoop loop;
    ProgressDisplay display;
    if (options.command == Command::Share) return Share(options, loop, display);
    if (options.command == Command::ChooseLocation) return ChooseLocation(options, loop, display);

    Session session(options, loop, display);
    if (options.watch) WatchLocations(session, options, Print);
    if (options.command == Command::Locations) return Print(ListLocations(session, options));
    if (options.command == Command::Trace) return Trace(session);
    if (options.command == Command::SignIn) return SignIn(session);
    SignOut(session);
}

int Run(Options const& options) {
    if (options.command == Command::Help) {
        Print(kHelp);
    } else if (options.command == Command::Version) {
        Print("quillo-host " QUILLO_HOST_VERSION "\n");
    } else {
        UseDataDirectory(options);
        if (options.command == Command::Editor) return editor::RunEditor(options);
        RunCommand(options);
    }
    return static_cast<int>(ExitCode::Done);
}

int Report(std::string const& message, ExitCode exitCode) {
    std::fprintf(stderr, "quillo-host: %s\n", OneLine(message).c_str());
    return static_cast<int>(exitCode);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(ParseOptions({argv + 1, argv + argc}));
    } catch (Failure const& failure) {
        return Report(failure.what(), failure.GetExitCode());
    } catch (std::exception const& exception) {
        return Report(exception.what(), ExitCode::Other);
    }
}
