#include "host/editor/EventLog.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QJsonDocument>
#include <QMetaEnum>
#include <QWidget>
#include <QWindow>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost::editor {

using moxcore::config::Text;
namespace {

QJsonObject Describe(QAccessibleInterface const& item, bool hasFocus) {
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
    if (state.focused && hasFocus) described["focused"] = true;
    if (state.disabled) described["disabled"] = true;
    if (state.checked) described["checked"] = true;
    return described;
}

/// `hasFocus`: of the widget that `item` is a part of. A list's current row calls itself focused
/// when the list is not.
void AddWithChildren(QAccessibleInterface& item, bool hasFocus, QJsonArray& items) {
    if (!item.isValid() || item.state().invisible) return;
    if (auto const* const widget = qobject_cast<QWidget*>(item.object()))
        hasFocus = widget->hasFocus();
    items.append(Describe(item, hasFocus));
    for (int i = 0; i < item.childCount(); ++i)
        if (auto* const child = item.child(i)) AddWithChildren(*child, hasFocus, items);
}

}  // namespace

EventLog::EventLog(std::filesystem::path const& name) : file(name) {
    if (!file)
        throw quillohostkit::Failure(
            quillohostkit::FailureKind::Other,
            Text("$$$/Vistrel/quillo-host/NoEventsFile=Cannot write \"{file}\" (--events).",
                 {{"file", name.string()}}));
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
            AddWithChildren(*item, false, screen);
    }
    if (screen == lastScreen) return;
    lastScreen = screen;
    Write({{"screen", screen}});
}

}  // namespace quillohost::editor
