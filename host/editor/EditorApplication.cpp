#include "host/editor/EditorApplication.h"

#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QThread>
#include <QTranslator>
#include <QWidget>
#include <QWindow>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "host/process/ExitCode.h"
#include "host/process/Terminal.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/threads/MainThread.h"

namespace quillohost::editor {

using moxcore::config::Text;
namespace {

/// Qt keeps these as long as the application lives, and takes out what it understands.
struct ProgramArguments {
    int count = 1;
    char name[12] = "quillo-host";
    char* values[2] = {name, nullptr};
};

ProgramArguments& Arguments() {
    static ProgramArguments arguments;
    return arguments;
}

/// Qt ends the process with a dump of its memory when it finds no display.
void ExitWithoutDisplay(QtMsgType type, QMessageLogContext const&, QString const&) {
    if (type != QtFatalMsg) return;
    TellLine("quillo-host: " + Text("$$$/Vistrel/quillo-host/NoDisplay=Cannot open a window: there "
                                    "is no display. Run it in a desktop session; the commands that "
                                    "quillo-host --help lists, but choose-location, need none."));
    std::_Exit(static_cast<int>(ExitCode::Other));
}

void TellMessage(QtMsgType type, QMessageLogContext const& context, QString const& text) {
    TellLine(qFormatLogMessage(type, context, text).toStdString());
}

/// The class of what receives an event; for a window, which Qt makes alike for all, of the widget
/// that it is of.
char const* ClassOf(QObject const& receiver) {
    if (receiver.isWindowType())
        for (auto const* const widget : QApplication::topLevelWidgets())
            if (widget->windowHandle() == &receiver) return widget->metaObject()->className();
    return receiver.metaObject()->className();
}

/// Qt's own texts, its buttons, and the direction follow the language of the program's.
void SpeakTheLanguage() {
    QLocale const locale(QString::fromStdString(moxcore::config::Localizer::LocaleInForce()));
    if (locale.language() == QLocale::C) return;
    QGuiApplication::setLayoutDirection(locale.textDirection());
    auto* const translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(locale, "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(translator);
}

/// Stands before the application's own construction.
int& CountWhileWatchingForDisplay() {
    qInstallMessageHandler(ExitWithoutDisplay);
    return Arguments().count;
}

}  // namespace

EditorApplication::EditorApplication(std::optional<std::filesystem::path> newWatchdogFile)
    : QApplication(CountWhileWatchingForDisplay(), Arguments().values),
      watchdogFile(std::move(newWatchdogFile)) {
    qInstallMessageHandler(TellMessage);
    SpeakTheLanguage();
    setApplicationDisplayName("quillo-host");
    // The names of what is installed with the program: desktops show its icon with its windows.
    setDesktopFileName("quillo-host");
    setWindowIcon(QIcon::fromTheme("quillo-host"));
    setStyle("Fusion");
    // A popup or a dialog that closes last must not end the program.
    setQuitOnLastWindowClosed(false);
}

EditorApplication::~EditorApplication() {
    if (watchdogFile) std::ofstream(*watchdogFile) << watchdog.Report();
}

bool EditorApplication::notify(QObject* receiver, QEvent* event) {
    if (!watchdogFile || thread() != QThread::currentThread()) return Notify(receiver, event);
    watchdog.Begin(ClassOf(*receiver), event->type(), thread()->loopLevel(), Watchdog::Now());
    bool const result = Notify(receiver, event);
    watchdog.End(Watchdog::Now());
    return result;
}

bool EditorApplication::Notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        // Qt's loop lets nothing through: what one event has spoilt must not end the program.
        moxcore::threads::MainThread::ReportFailure(std::current_exception());
        return false;
    }
}

}  // namespace quillohost::editor
