// quillo-host: a window, or a command.

#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/commands/LocationsCommand.h"
#include "host/commands/ShareCommand.h"
#include "host/commands/TraceCommand.h"
#include "host/editor/ChooseLocationCommand.h"
#include "host/editor/RunEditor.h"
#include "host/process/ExitCode.h"
#include "host/process/MainLoop.h"
#include "host/process/ProgressDisplay.h"
#include "host/process/Terminal.h"
#include "host/session/DestinationFinder.h"
#include "host/session/Options.h"
#include "host/session/Session.h"
#include "host/state/HostFiles.h"
#include "moxcore/config/Localizer.h"

namespace {

using namespace quillohost;
using moxcore::config::Text;

void Share(Options const& options, MainLoop& loop, ProgressDisplay& display) {
    ShareCommand command(options, loop, display);
    auto const result = command.Run();
    display.Tell(Text(
        result.isNewLink
            ? "$$$/Vistrel/quillo-host/Share/NewLink=Shared as version {version} under a new link"
            : "$$$/Vistrel/quillo-host/Share/SameLink=Shared as version {version} under the link "
              "it had",
        {{"version", std::to_string(result.version)}}));
    if (auto const hint = command.HowToOpen(result.link); !hint.empty()) display.Tell(hint);
    if (!options.json) return PrintLines({result.link});
    PrintLines(JsonLines({{"link", result.link},
                          {"link_id", result.linkID},
                          {"asset_id", result.assetID},
                          {"version_stack_id", result.versionStackID},
                          {"folder_id", result.folderID},
                          {"folder_path", result.folderPath},
                          {"version", result.version},
                          {"sha256", result.exported.sha256},
                          {"bytes", result.exported.bytes},
                          {"new_link", result.isNewLink}}));
}

void ChooseLocation(Options const& options, MainLoop& loop, ProgressDisplay& display) {
    auto const chosen = editor::ChooseLocation(options, loop, display);
    auto const id = chosen.FolderID().AsStdString();
    if (!options.json) return PrintLines({chosen.namePath, id});
    PrintLines(JsonLines({{"folder_id", id}, {"folder_path", chosen.namePath}}));
}

void SignIn(Session& session) {
    auto const user = session.SignIn();
    PrintLines(
        {Text("$$$/Vistrel/quillo-host/SignIn/Done=Signed in to {service} as {user}.",
              {{"service", session.Service().Address()}, {"user", quillohostkit::NameOf(*user)}})});
}

void SignOut(Session& session) {
    session.SignOut();
    PrintLines({Text("$$$/Vistrel/quillo-host/SignOut/Done=Signed out of {service}.",
                     {{"service", session.Service().Address()}})});
}

void RunCommand(Options const& options) {
    MainLoop loop;
    ProgressDisplay display;
    if (options.command == Command::Share) return Share(options, loop, display);
    if (options.command == Command::ChooseLocation) return ChooseLocation(options, loop, display);

    Session session(options, loop, display);
    if (options.watch) WatchLocations(session, options, PrintLines);
    if (options.command == Command::Locations) return PrintLines(ListLocations(session, options));
    if (options.command == Command::Trace) return Trace(session);
    if (options.command == Command::SignIn) return SignIn(session);
    SignOut(session);
}

int Run(Options const& options) {
    if (options.command == Command::Help) {
        PrintLines(LinesOf(Text(kHelp)));
    } else if (options.command == Command::Version) {
        PrintLines({"quillo-host " QUILLO_HOST_VERSION});
    } else {
        UseDataDirectory(options.data);
        if (options.command == Command::Editor) return editor::RunEditor(options);
        RunCommand(options);
    }
    return static_cast<int>(ExitCode::Done);
}

int Report(std::string const& message, ExitCode exitCode) {
    TellLine("quillo-host: " + message);
    return static_cast<int>(exitCode);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        TellTraces();
        return Run(ParseOptions({argv + 1, argv + argc}));
    } catch (quillohostkit::Failure const& failure) {
        return Report(failure.what(), ExitCodeOf(failure.GetKind()));
    } catch (std::exception const& exception) {
        return Report(exception.what(), ExitCode::Other);
    }
}
