#pragma once

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <filesystem>
#include <memory>

#include "host/editor/EventLog.h"
#include "host/editor/Player.h"
#include "host/editor/RecentMovies.h"
#include "host/editor/SampleClip.h"
#include "host/editor/Sharing.h"
#include "host/session/Options.h"
#include "moxcore/utility/LifetimeToken.h"
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

    [[nodiscard]] Sharing const& GetSharing() const { return sharing; }

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
    void OnSharingChanged();
    [[nodiscard]] bool MayClose();
    [[nodiscard]] bool AskToAccept(std::string const& damage);

    EventLog* log;
    QSettings settings;
    RecentMovies recentMovies;
    QPushButton* shareButton;
    quillohostkit::ElidedLabel* title;
    quillohostkit::ElidedLabel* message;
    quillohostkit::ElidedLabel* phaseLabel;
    QProgressBar* progress;
    QStackedWidget* pages;
    Player* player;
    QMenu* recentMenu = nullptr;
    QAction* openAction;
    QAction* sampleAction;
    QAction* shareAction;
    QAction* shareAgainAction;
    QAction* cancelAction;
    Sharing sharing;
    std::unique_ptr<quillohostkit::MovieProbe> probe;
    std::unique_ptr<SampleClip> sampleClip;
    std::vector<std::shared_ptr<quillomoxui::BindingHandle>> bindings;
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillohost::editor
