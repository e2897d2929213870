#include "host/editor/ChooseLocationCommand.h"

#include <memory>

#include "host/editor/AppTheme.h"
#include "host/editor/EditorApplication.h"
#include "host/editor/EventLog.h"
#include "host/session/Session.h"
#include "moxcore/config/Localizer.h"
#include "moxui/backend/HostWidget.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost::editor {

using moxcore::config::Text;
namespace {

/// While a dialog is shown its own loop runs, which knows nothing of failures.
class CloseOnFailure {
public:
    explicit CloseOnFailure(MainLoop& loop) : loop(loop) {
        loop.SetFailureHook([] { QApplication::closeAllWindows(); });
    }
    ~CloseOnFailure() { loop.SetFailureHook({}); }
    CloseOnFailure(CloseOnFailure const&) = delete;
    CloseOnFailure& operator=(CloseOnFailure const&) = delete;

private:
    MainLoop& loop;
};

}  // namespace

quillohostkit::ChosenLocation ChooseLocation(Options const& options, MainLoop& loop,
                                             ProgressDisplay& display) {
    using quillocommon::Step;
    EditorApplication const application(std::nullopt);
    moxui::backend::RunMainThreadQueueInQt();
    auto const log = options.events ? std::make_unique<EventLog>(*options.events) : nullptr;
    UseTheme(ThemeChoice::System);
    Session session(options, loop, display);
    display.Tell(Text("$$$/Vistrel/quillo-host/SignIn/UnderWay=Signing in to {service}",
                      {{"service", session.Service().Address()}}));
    auto const user = session.SignIn();
    QWidget hidden;
    std::optional<quillohostkit::ChosenLocation> chosen;
    {
        CloseOnFailure const closer(loop);
        chosen = quillohostkit::AskForLocation(user, hidden);
    }
    loop.WaitUntil([] { return true; });  // throws what has closed the dialog
    if (chosen) return *chosen;
    session.ThrowIfFailed({Step::SignIn, Step::ReadUser, Step::ReadLocations});
    throw quillohostkit::Failure(
        quillohostkit::FailureKind::Cancelled,
        Text("$$$/Vistrel/quillo-host/NothingChosen=No location was chosen."));
}

}  // namespace quillohost::editor
