#pragma once

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <filesystem>
#include <memory>
#include <optional>

#include "host/editor/EventLog.h"
#include "host/editor/Player.h"
#include "host/editor/RecentMovies.h"
#include "host/editor/SampleClip.h"
#include "host/session/Options.h"
#include "host/session/ServiceConnection.h"
#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/ShareController.h"
#include "quillohostkit/ShareStatusLabel.h"
#include "quillohostkit/media/MovieProbe.h"
#include "quillohostkit/widgets/ElidedLabel.h"

namespace quillohost::editor {

/// The window of the editor: shows a movie and shares it. Main thread.
class MainWindow : public QMainWindow {
public:
    /// A Failure when the options or the host's own files do not let it work. `log` may be null.
    MainWindow(Options const& options, EventLog* log);
    ~MainWindow() override;

    /// Opens a movie, or says why it cannot be opened; the movie before stays open then.
    void Open(std::filesystem::path const& file);

    /// Shows one line to the user.
    void Tell(std::string const& message);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void MakeToolBar();
    void MakeStatusBar();
    void MakeFileMenu();
    void MakeShareMenu();
    void MakeThemeMenu();
    void FillRecentMenu();
    void ChooseMovie();
    void OpenSampleClip();
    void ShowMovie(quillohostkit::Movie const& movie);
    void ConnectSharing();
    void OnServiceReady();
    void OnSharingChanged();
    void OnShared(QString const& link);
    void ShowPreferences();
    [[nodiscard]] bool AskToAccept(std::string const& damage);

    EventLog* log;
    QSettings settings;
    RecentMovies recentMovies;
    QPushButton* shareButton;
    quillohostkit::ElidedLabel* title;
    QStackedWidget* pages;
    Player* player;
    QMenu* recentMenu = nullptr;
    QAction* openAction;
    QAction* sampleAction;
    QAction* shareAction;
    QAction* shareAgainAction;
    QAction* cancelAction;
    QAction* signOutAction;
    std::optional<std::string> browser;
    quillohostkit::ShareController* sharing;
    quillohostkit::ShareStatusLabel* status;
    quillohostkit::KeyLocks const locks;
    ServiceConnection service;
    bool isServiceReady = false;
    std::optional<quillohostkit::Movie> movie;  // that is open
    std::unique_ptr<quillohostkit::MovieProbe> probe;
    std::unique_ptr<SampleClip> sampleClip;
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillohost::editor
