// A host that kit_bench.py measures: a window with a tool bar and a status bar, with the kit's
// button and label or, compiled without WITH_KIT, with Qt's own. Prints one JSON object.

#include <sys/resource.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <utility>

#ifdef WITH_KIT
#include "quillohostkit/ShareButton.h"
#include "quillohostkit/ShareStatusLabel.h"
#endif

namespace {

double ProcessorMs() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    auto const ms = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return ms(used.ru_utime) + ms(used.ru_stime);
}

/// What the process has written to, and so shares with no other, in MB.
double WrittenMB() {
    std::ifstream file("/proc/self/smaps_rollup");
    double kilobytes = 0;
    for (std::string word; file >> word;)
        if (double value = 0; word == "Private_Dirty:" && file >> value) kilobytes += value;
    return kilobytes / 1024;
}

/// Runs Qt's loop until a top-level widget that `isWanted` has been painted.
class Painted : public QObject {
public:
    static void Await(std::function<bool(QWidget const&)> const& isWanted) {
        Painted const filter(isWanted);
        while (!filter.isDone)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    explicit Painted(std::function<bool(QWidget const&)> newIsWanted)
        : isWanted(std::move(newIsWanted)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override {
        // Qt has painted a widget with all that is below it when it asks for the next update.
        if (event->type() == QEvent::Paint)
            if (auto const* const widget = qobject_cast<QWidget*>(watched))
                isDone = isDone || isWanted(*widget->window());
        return false;
    }

    std::function<bool(QWidget const&)> const isWanted;
    bool isDone = false;
};

/// Notes the longest handling of one event.
class Host : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        QElapsedTimer timer;
        timer.start();
        bool const result = QApplication::notify(receiver, event);
        longest = std::max(longest, timer.nsecsElapsed());
        return result;
    }
    double TakeLongestMs() { return static_cast<double>(std::exchange(longest, 0)) / 1e6; }

private:
    qint64 longest = 0;
};

}  // namespace

int main(int argc, char** argv) {
    // Without an address there is no popup to wait for.
    if (!qEnvironmentVariableIsSet("QUILLO_SERVICE_URL")) {
        std::fprintf(stderr, "Run bench/kit_bench/kit_bench.py, which names a service.\n");
        return 2;
    }
    Host application(argc, argv);
    QApplication::setApplicationName("kit_bench");
    QApplication::setQuitOnLastWindowClosed(false);
    QMainWindow window;
    window.resize(640, 360);
#ifdef WITH_KIT
    auto* const share = new quillohostkit::ShareButton(&window);
    share->SetAsset(quillohostkit::Asset{"/tmp/clip.mp4"});
    auto* const label = new quillohostkit::ShareStatusLabel(share->GetController());
#else
    auto* const share = new QToolButton(&window);
    share->setText("Share");
    auto* const label = new QLabel;
#endif
    window.addToolBar("Share")->addWidget(share);
    window.statusBar()->addWidget(label, 1);
    window.show();
    Painted::Await([&](QWidget const& painted) { return &painted == &window; });
    QCoreApplication::processEvents();  // what was left for after the start
    std::printf("{\"start_ms\": %.3f, \"written_mb\": %.3f", ProcessorMs(), WrittenMB());
    application.TakeLongestMs();

#ifdef WITH_KIT
    constexpr int kWarmOpenings = 20;
    for (int opening = 0; opening <= kWarmOpenings; ++opening) {
        QElapsedTimer timer;
        timer.start();
        QMetaObject::invokeMethod(share, &QToolButton::click, Qt::QueuedConnection);
        QWidget const* popup = nullptr;
        Painted::Await([&](QWidget const& painted) {
            popup = &painted;
            return &painted != &window;
        });
        std::printf("%s%.3f", opening == 0 ? ", \"openings_ms\": [" : ", ",
                    static_cast<double>(timer.nsecsElapsed()) / 1e6);
        const_cast<QWidget*>(popup)->close();
        while (popup && QApplication::topLevelWidgets().size() > 1 &&
               std::ranges::any_of(QApplication::topLevelWidgets(), [&](QWidget const* other) {
                   return other != &window && other->isVisible();
               }))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    std::printf("], \"longest_turn_ms\": %.3f", application.TakeLongestMs());
#endif
    std::printf("}\n");
    return 0;
}
