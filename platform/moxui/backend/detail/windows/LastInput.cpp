#include "moxui/backend/detail/windows/LastInput.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

namespace moxui::backend {
namespace {

class InputWatcher : public QObject {
public:
    using QObject::QObject;

    bool key = false;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
            case QEvent::ShortcutOverride:  // comes first, also for a key that is a shortcut
            case QEvent::KeyPress:
                key = true;
                break;
            case QEvent::MouseButtonPress:
            case QEvent::TouchBegin:
            case QEvent::TabletPress:
                key = false;
                break;
            default:
                break;
        }
        return false;
    }
};

/// The application's own, with which it goes.
QPointer<InputWatcher> watcher;

}  // namespace

void WatchInput() {
    auto* const application = QCoreApplication::instance();
    if (watcher || !application) return;
    watcher = new InputWatcher(application);
    application->installEventFilter(watcher);
}

bool LastInputWasKey() {
    return watcher && watcher->key;
}

}  // namespace moxui::backend
