#include "host/editor/MainWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>
#include <system_error>
#include <utility>

#include "host/editor/AppTheme.h"
#include "host/editor/DeveloperMenu.h"
#include "host/editor/Welcome.h"
#include "host/process/Terminal.h"
#include "host/state/HostFiles.h"
#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxui/backend/HostWidget.h"
#include "quillohostkit/FfmpegExporter.h"
#include "quillohostkit/PreferencesPage.h"
#include "quillohostkit/ServiceSettings.h"
#include "quillohostkit/process/OnMainThread.h"
#include "quillohostkit/text/PlainText.h"
#include "quillohostkit/widgets/QtText.h"

namespace quillohost::editor {

using quillohostkit::QtText;

using moxcore::config::Text;
namespace {

namespace fs = std::filesystem;

constexpr char const* kThemeKey = "theme";

QString NameOf(fs::path const& file) {
    return QFile::decodeName(file.c_str());
}

/// Its name as it can be shown.
QString Shown(fs::path const& file) {
    return QString::fromStdString(quillohostkit::OneLine(file.string()));
}

fs::path PathOf(QString const& name) {
    return fs::path(QFile::encodeName(name).toStdString());
}

}  // namespace

MainWindow::MainWindow(Options const& options, EventLog* log)
    : log(log),
      settings(NameOf(OwnHostFile("editor.ini")), QSettings::IniFormat),
      recentMovies(settings),
      shareButton(new QPushButton(QtText("$$$/Vistrel/quillo-host/Menu/ShareButton=Share"))),
      title(new quillohostkit::ElidedLabel(QtText("$$$/Vistrel/quillo-host/Menu/Movie=Movie"),
                                           Qt::ElideMiddle)),
      pages(new QStackedWidget),
      player(new Player([this](auto const& line) { Tell(line); })),
      openAction(new QAction(QtText("$$$/Vistrel/quillo-host/Menu/Open=&Open..."), this)),
      sampleAction(
          new QAction(QtText("$$$/Vistrel/quillo-host/Menu/Sample=Open the &Sample Clip"), this)),
      shareAction(
          new QAction(QtText("$$$/Vistrel/quillo-host/Menu/Share=&Share for Review..."), this)),
      shareAgainAction(new QAction(
          QtText("$$$/Vistrel/quillo-host/Menu/ShareAgain=Share a &New Version..."), this)),
      cancelAction(
          new QAction(QtText("$$$/Vistrel/quillo-host/Menu/Cancel=&Cancel the Share"), this)),
      signOutAction(new QAction(QtText("$$$/Vistrel/quillo-host/Menu/SignOut=Sign &Out"), this)),
      browser(options.browser),
      sharing(new quillohostkit::ShareController(shareButton)),
      status(new quillohostkit::ShareStatusLabel(sharing)),
      locks(OwnHostFile("locks")),
      service(options, locks,
              {.onWait =
                   [this] {
                       Tell(
                           Text("$$$/Vistrel/quillo-host/Session/SharingWaits=Sharing has to wait "
                                "for another quillo-host that uses the same state."));
                   },
               .onGone =
                   [this](auto const& gone) {
                       Tell(moxcore::config::ExtractMessageFromException(gone));
                   }}) {
    ConnectSharing();
    MakeToolBar();
    MakeStatusBar();
    MakeFileMenu();
    MakeShareMenu();
    MakeThemeMenu();
    menuBar()->addMenu(new DeveloperMenu(*menuBar()));
    pages->addWidget(new Welcome({openAction, sampleAction}));
    pages->addWidget(player);
    setCentralWidget(pages);
    setAcceptDrops(true);
    setWindowTitle("quillo-host");
    moxui::backend::SetMainTopLevelWindow(this);
    OnSharingChanged();
}

MainWindow::~MainWindow() = default;

void MainWindow::MakeToolBar() {
    auto* const bar = addToolBar(QtText("$$$/Vistrel/quillo-host/Menu/Movie=Movie"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    bar->setContentsMargins(0, 2, 8, 2);
    title->setContentsMargins(10, 0, 10, 0);
    bar->addWidget(title);
    bar->addWidget(shareButton);
    shareButton->setAccessibleName(
        QtText("$$$/Vistrel/quillo-host/Menu/ShareName=Share for Review"));
    shareButton->setToolTip(
        QtText("$$$/Vistrel/quillo-host/Menu/ShareTip=Share the movie for review (Ctrl+Shift+E)"));
    connect(shareButton, &QPushButton::clicked, shareAction, &QAction::trigger);
}

void MainWindow::MakeStatusBar() {
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 8, 0);
    statusBar()->addWidget(status, 1);
}

void MainWindow::MakeFileMenu() {
    auto* const menu = menuBar()->addMenu(QtText("$$$/Vistrel/quillo-host/Menu/File=&File"));
    menu->addAction(openAction);
    openAction->setShortcut(QKeySequence::Open);
    connect(openAction, &QAction::triggered, this, [this] { ChooseMovie(); });
    recentMenu = menu->addMenu(QtText("$$$/Vistrel/quillo-host/Menu/Recent=Open &Recent"));
    connect(recentMenu, &QMenu::aboutToShow, this, [this] { FillRecentMenu(); });
    menu->addAction(sampleAction);
    connect(sampleAction, &QAction::triggered, this, [this] { OpenSampleClip(); });
    menu->addSeparator();
    menu->addAction(QtText("$$$/Vistrel/quillo-host/Menu/Preferences=&Preferences..."),
                    QKeySequence("Ctrl+,"), this, [this] { ShowPreferences(); });
    menu->addSeparator();
    menu->addAction(QtText("$$$/Vistrel/quillo-host/Menu/Quit=&Quit"), QKeySequence::Quit, this,
                    [this] { close(); });
}

void MainWindow::FillRecentMenu() {
    recentMenu->clear();
    for (auto const& movie : recentMovies.Get()) {
        auto* const action = recentMenu->addAction(Shown(movie).replace("&", "&&"), this,
                                                   [this, movie] { Open(movie); });
        std::error_code error;
        action->setEnabled(fs::exists(movie, error));
    }
    bool const isEmpty = recentMenu->isEmpty();
    recentMenu->addSeparator();
    recentMenu
        ->addAction(QtText("$$$/Vistrel/quillo-host/Menu/ClearRecent=&Clear This List"), this,
                    [this] { recentMovies.Clear(); })
        ->setEnabled(!isEmpty);
}

void MainWindow::MakeShareMenu() {
    auto* const menu = menuBar()->addMenu(QtText("$$$/Vistrel/quillo-host/Menu/ShareMenu=&Share"));
    menu->addAction(shareAction);
    shareAction->setShortcut(QKeySequence("Ctrl+Shift+E"));
    connect(shareAction, &QAction::triggered, this, [this] { sharing->Open(); });
    menu->addAction(shareAgainAction);
    connect(shareAgainAction, &QAction::triggered, this, [this] { sharing->ShareAgain(); });
    menu->addAction(cancelAction);
    connect(cancelAction, &QAction::triggered, this, [this] { sharing->Cancel(); });
    menu->addSeparator();
    menu->addAction(signOutAction);
    connect(signOutAction, &QAction::triggered, sharing, &quillohostkit::ShareController::SignOut);
}

void MainWindow::MakeThemeMenu() {
    auto* const menu = menuBar()
                           ->addMenu(QtText("$$$/Vistrel/quillo-host/Menu/View=&View"))
                           ->addMenu(QtText("$$$/Vistrel/quillo-host/Menu/Theme=&Theme"));
    auto* const group = new QActionGroup(this);
    auto const inForce = settings.value(kThemeKey).toInt();
    for (auto const& [choice, text] :
         {std::pair(ThemeChoice::System, "$$$/Vistrel/quillo-host/Menu/ThemeSystem=As the &System"),
          std::pair(ThemeChoice::Dark, "$$$/Vistrel/quillo-host/Menu/ThemeDark=&Dark"),
          std::pair(ThemeChoice::Light, "$$$/Vistrel/quillo-host/Menu/ThemeLight=&Light")}) {
        auto const number = static_cast<int>(choice);
        auto* const action = menu->addAction(QtText(text), this, [this, choice = choice, number] {
            settings.setValue(kThemeKey, number);
            UseTheme(choice);
        });
        action->setCheckable(true);
        action->setChecked(number == inForce);
        group->addAction(action);
    }
    UseTheme(static_cast<ThemeChoice>(inForce));
}

void MainWindow::ChooseMovie() {
    auto const name = QFileDialog::getOpenFileName(
        this, QtText("$$$/Vistrel/quillo-host/OpenMovie/Title=Open a Movie"), {},
        QtText("$$$/Vistrel/quillo-host/OpenMovie/Movies=Movies") +
            " (*.mov *.mp4 *.m4v *.mkv *.avi *.webm *.mxf *.wav *.mp3 *.m4a);;" +
            QtText("$$$/Vistrel/quillo-host/OpenMovie/All=All files") + " (*)");
    if (!name.isEmpty()) Open(PathOf(name));
}

void MainWindow::OpenSampleClip() {
    auto const file = HostDataFile("Sample clip.mov");
    std::error_code error;
    if (fs::exists(file, error)) return Open(file);
    try {
        sampleClip = std::make_unique<SampleClip>(file);
    } catch (std::exception const& exception) {
        return Tell(exception.what());
    }
    Tell(Text("$$$/Vistrel/quillo-host/Sample/Making=Making the sample clip..."));
    sampleAction->setEnabled(false);
    quillohostkit::OnMainThread(sampleClip->Result(), token, [this](auto const& made) {
        sampleAction->setEnabled(true);
        try {
            Open(made.Get());
        } catch (std::exception const& exception) {
            Tell(exception.what());
        }
    });
}

void MainWindow::Open(fs::path const& file) {
    try {
        probe = std::make_unique<quillohostkit::MovieProbe>(file);
    } catch (std::exception const& exception) {
        return Tell(exception.what());
    }
    Tell(Text("$$$/Vistrel/quillo-host/OpenMovie/Opening=Opening \"{file}\"...",
              {{"file", file.string()}}));
    quillohostkit::OnMainThread(probe->Result(), token,
                                [this, asked = probe.get()](auto const& found) {
                                    if (asked != probe.get())
                                        return;  // another one was asked for meanwhile
                                    try {
                                        ShowMovie(found.Get());
                                    } catch (std::exception const& exception) {
                                        Tell(exception.what());
                                    }
                                });
}

void MainWindow::ShowMovie(quillohostkit::Movie const& newMovie) {
    movie = newMovie;
    sharing->Refresh();
    OnSharingChanged();
    player->Show(*movie);
    pages->setCurrentWidget(player);
    auto const name = NameOf(movie->file);
    title->SetText(name);
    setWindowTitle(Shown(movie->file.filename()) + " - quillo-host");
    recentMovies.Add(movie->file);
    Tell("");
    if (log) log->Write({{"movie", name}});
}

void MainWindow::Tell(std::string const& line) {
    auto const text = QString::fromStdString(quillohostkit::OneLine(line));
    status->showMessage(text);
    if (log) log->Write({{"message", text}});
}

void MainWindow::ConnectSharing() {
    using quillohostkit::Asset;
    using quillohostkit::AssetKind;
    using quillohostkit::ShareState;
    sharing->SetAsset([this] {
        if (!movie) return Asset{};
        return Asset{
            NameOf(movie->file), {}, movie->hasPicture ? AssetKind::Movie : AssetKind::Sound, {}};
    });
    sharing->SetExporter(quillohostkit::FfmpegExporter(
        {}, [this](QString const& damage) { return AskToAccept(damage.toStdString()); }));
    sharing->SetWhenClosed(quillohostkit::ShareController::WhenClosed::Ask);
    auto* const state = sharing->GetState();
    connect(state, &ShareState::changed, this, [this] { OnSharingChanged(); });
    connect(state, &ShareState::messageChanged, this, [this](QString const& line) {
        if (log) log->Write({{"message", line}});
    });
    connect(state, &ShareState::shareFinished, this, [this](auto const& link) { OnShared(link); });
    auto const onReady = [this](auto const& ready) {
        try {
            ready.Get();
            OnServiceReady();
        } catch (std::exception const& exception) {
            Tell(exception.what());
        }
    };
    // The kit must have its settings before it sees the address, which it takes up by itself.
    if (auto const ready = service.Ready(); ready.IsComplete()) return onReady(ready);
    quillohostkit::OnMainThread(service.Ready(), token, onReady);
}

void MainWindow::OnServiceReady() {
    auto const wrong =
        quillohostkit::SetServiceSettings({.address = QString::fromStdString(service.Address()),
                                           .name = QString::fromStdString(service.ServiceName()),
                                           .clientID = "quillo-host",
                                           .browser = QString::fromStdString(browser.value_or("")),
                                           .dataDirectory = NameOf(HostDataFile(""))});
    if (!wrong.isEmpty()) return Tell(wrong.toStdString());
    isServiceReady = true;
    OnSharingChanged();
}

void MainWindow::OnSharingChanged() {
    auto const& state = *sharing->GetState();
    bool const canShare = movie && isServiceReady;
    shareButton->setEnabled(canShare);
    shareAction->setEnabled(canShare);
    shareAgainAction->setEnabled(state.canShareAgain());
    cancelAction->setEnabled(state.canCancel());
    signOutAction->setEnabled(!state.signedInAs().isEmpty());
}

void MainWindow::OnShared(QString const& link) {
    auto const hint = service.HowToOpen(link.toStdString());
    if (!hint.empty()) Tell(sharing->GetState()->message().toStdString() + " " + hint);
}

void MainWindow::ShowPreferences() {
    QDialog dialog(this);
    dialog.setWindowTitle(QtText("$$$/Vistrel/quillo-host/Preferences=Preferences"));
    dialog.setMinimumWidth(520);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)
        ->setText(QtText("$$$/Vistrel/quillo-host/Close=Close"));
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* const layout = new QVBoxLayout(&dialog);
    layout->addWidget(new quillohostkit::PreferencesPage(sharing));
    layout->addWidget(buttons);
    dialog.exec();
}

bool MainWindow::AskToAccept(std::string const& damage) {
    QMessageBox question(QMessageBox::Warning, windowTitle(),
                         QString::fromStdString(quillohostkit::OneLine(damage)),
                         QMessageBox::NoButton, this);
    question.setTextFormat(Qt::PlainText);
    question.setInformativeText(
        QtText("$$$/Vistrel/quillo-host/Damaged/Question=Share what there is of it?"));
    auto* const share =
        question.addButton(QtText("$$$/Vistrel/quillo-host/Damaged/Share=Share What There Is"),
                           QMessageBox::AcceptRole);
    auto* const stop = question.addButton(
        QtText("$$$/Vistrel/quillo-host/Damaged/DoNot=Do Not Share"), QMessageBox::RejectRole);
    question.setDefaultButton(stop);
    question.setEscapeButton(stop);
    question.exec();
    return question.clickedButton() == share;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    QApplication::exit(0);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    auto const urls = event->mimeData()->urls();
    if (urls.size() == 1 && urls.front().isLocalFile()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    Open(PathOf(event->mimeData()->urls().front().toLocalFile()));
}

void MainWindow::changeEvent(QEvent* event) {
    // The desktop's theme has changed.
    if (event->type() == QEvent::ThemeChange &&
        settings.value(kThemeKey).toInt() == static_cast<int>(ThemeChoice::System))
        UseTheme(ThemeChoice::System);
    QMainWindow::changeEvent(event);
}

}  // namespace quillohost::editor
