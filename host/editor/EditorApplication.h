#pragma once

#include <QApplication>
#include <filesystem>
#include <optional>

#include "host/editor/Watchdog.h"

namespace quillohost::editor {

/// The window's application. Its style is one that takes all of its colours from the palette.
class EditorApplication : public QApplication {
public:
    /// With a file, that is where what the watchdog has measured is written at the end. A Failure
    /// (Other) when there is no display to show a window on.
    explicit EditorApplication(std::optional<std::filesystem::path> watchdogFile);
    ~EditorApplication() override;

    /// Reports exceptions of slots and handlers (moxcore/threads/MainThread.h); the program goes
    /// on.
    bool notify(QObject* receiver, QEvent* event) override;

private:
    bool Notify(QObject* receiver, QEvent* event);

    std::optional<std::filesystem::path> watchdogFile;
    Watchdog watchdog;
};

}  // namespace quillohost::editor
