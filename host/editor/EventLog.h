#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <filesystem>
#include <fstream>

namespace quillohost::editor {

/// For tests that drive the window from outside: writes what can be seen in the program's windows,
/// as an assistive tool reads it, whenever that has changed, and its announcements. Each event
/// is a line with one JSON object. Main thread.
class EventLog : public QObject {
public:
    /// A Failure (Other) when the file cannot be written.
    explicit EventLog(std::filesystem::path const& file);

    void Write(QJsonObject const& event);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void WriteScreen();

    std::ofstream file;
    QJsonArray lastScreen;
    bool isScheduled = false;
};

}  // namespace quillohost::editor
