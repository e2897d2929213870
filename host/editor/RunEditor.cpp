#include "host/editor/RunEditor.h"

#include <memory>
#include <string>

#include "host/editor/EditorApplication.h"
#include "host/editor/EventLog.h"
#include "host/editor/MainWindow.h"
#include "host/process/ExitCode.h"
#include "host/process/SignalThread.h"
#include "host/process/Terminal.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"

namespace quillohost::editor {

using moxcore::threads::MainThread;

int RunEditor(Options const& options) {
    SignalThread const signals([] {
        moxcore::threads::AsyncCallFromMainThread(
            [] { QApplication::exit(static_cast<int>(ExitCode::Interrupted)); }, 0);
    });
    EditorApplication application(options.watchdog);
    moxui::backend::RunMainThreadQueueInQt();
    auto const log = options.events ? std::make_unique<EventLog>(*options.events) : nullptr;

    int exitCode = 0;
    {
        MainWindow window(options, log.get());
        MainThread::SetFailureHandler([&window](std::exception_ptr const& thrown) {
            try {
                std::rethrow_exception(thrown);
            } catch (std::exception const& exception) {
                window.Tell(exception.what());
            }
        });
        window.resize(window.sizeHint());
        window.show();
        if (!options.movie.empty()) window.Open(options.movie);
        exitCode = QApplication::exec();
        MainThread::SetFailureHandler(nullptr);
    }
    return exitCode;
}

}  // namespace quillohost::editor
