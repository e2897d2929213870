#include "host/editor/EventLog.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QJsonDocument>
#include <QMetaEnum>
#include <QWidget>
#include <QWindow>

#include "host/Failure.h"

namespace quillohost::editor {
namespace {

QJsonObject Describe(QAccessibleInterface const& item) {
    auto const state = item.state();
    auto const place = item.rect();
    QJsonObject described{
        {"role", QMetaEnum::fromType<QAccessible::Role>().valueToKey(item.role())},
        {"name", item.text(QAccessible::Name)},
        {"value", item.text(QAccessible::Value)},
        {"x", place.x()},
        {"y", place.y()},
        {"width", place.width()},
        {"height", place.height()},
    };
    if (state.focused) described["focused"] = true;
    if (state.disabled) described["disabled"] = true;
    if (state.checked) described["checked"] = true;
    return described;
}

void AddWithChildren(QAccessibleInterface& item, QJsonArray& items) {
    if (!item.isValid() || item.state().invisible) return;
    items.append(Describe(item));
    for (int i = 0; i < item.childCount(); ++i)
        if (auto* const child = item.child(i)) AddWithChildren(*child, items);
}

}  // namespace

EventLog::EventLog(std::filesystem::path const& name) : file(name) {
    if (!file) throw Failure(ExitCode::Other, "Cannot write \"" + name.string() + "\" (--events).");
    qApp->installEventFilter(this);
}

void EventLog::Write(QJsonObject const& event) {
    file << QJsonDocument(event).toJson(QJsonDocument::Compact).constData() << std::endl;
}

bool EventLog::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::Expose:
        case QEvent::Paint:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::FocusIn:
        case QEvent::FocusOut:
        case QEvent::EnabledChange:
            if (isScheduled) break;
            isScheduled = true;
            QMetaObject::invokeMethod(
                this, [this] { WriteScreen(); }, Qt::QueuedConnection);
            break;
        default:
            break;
    }
    return false;
}

void EventLog::WriteScreen() {
    isScheduled = false;
    QJsonArray screen;
    for (auto* const window : QApplication::topLevelWidgets()) {
        // Shown by the program, but not on the screen yet: it cannot be clicked.
        if (!window->windowHandle() || !window->windowHandle()->isExposed()) continue;
        if (auto* const item = QAccessible::queryAccessibleInterface(window))
            AddWithChildren(*item, screen);
    }
    if (screen == lastScreen) return;
    lastScreen = screen;
    Write({{"screen", screen}});
}

}  // namespace quillohost::editor
