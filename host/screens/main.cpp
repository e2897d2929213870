// quillo-screens: writes a picture of every view of the share popup, in a window as a host would
// show it, through the library's public interface alone.

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLocale>
#include <QPushButton>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "host/screens/SampleTree.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/skins/ThemeProvider.h"
#include "moxui/utility/ResourceManager.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quilloscreens {
namespace {

using namespace quillomoxui;
using moxcore::string::AsciiToUTF16;
using quilloauth::SignInStage;
using ID = ShareForReviewViewID;

struct Screen {
    char const* name;
    ID id;
    SignInStage signIn = SignInStage::None;
    bool isUploadWaiting = false;
};

/// Five past two in the afternoon.
constexpr moxcore::threads::TimePoint kSince{std::chrono::hours(14) + std::chrono::minutes(5)};

constexpr Screen kScreens[] = {
    {"sign-in", ID::SigninPrompt},
    {"sign-in-asking", ID::SigninPrompt, SignInStage::Asking},
    {"sign-in-waiting", ID::SigninPrompt, SignInStage::Waiting},
    {"sign-in-browser", ID::SigninPrompt, SignInStage::InBrowser},
    {"sign-in-denied", ID::SigninPrompt, SignInStage::Denied},
    {"sign-in-expired", ID::SigninPrompt, SignInStage::Expired},
    {"sign-in-no-browser", ID::SigninPrompt, SignInStage::NoBrowser},
    {"sign-in-unavailable", ID::SigninPrompt, SignInStage::Unavailable},
    {"sign-in-refused", ID::SigninPrompt, SignInStage::Refused},
    {"review", ID::ReviewInQuillo},
    {"select-project", ID::SelectProject},
    {"select-folder", ID::SelectFolder},
    {"waiting", ID::WaitingInQueue},
    {"encoding", ID::EncodingProgress},
    {"uploading", ID::UploadInProgress},
    {"uploading-waiting", ID::UploadInProgress, SignInStage::None, true},
    {"copy-link", ID::CopyLinkSection},
    {"debug", ID::DebugView},
};

/// Runs what is queued until nothing is.
void Settle() {
    do
        QCoreApplication::processEvents();
    while (moxcore::threads::MainThread::RunPending() > 0);
    QCoreApplication::processEvents();
}

/// The popup's window; null while there is none.
QWidget* PopupWindow() {
    for (auto* const widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->findChild<QWidget*>("PopupMainView")) return widget;
    return nullptr;
}

/// A share in the middle of its way.
std::shared_ptr<ShareForReviewViewModel> MakeViewModel(SampleTree const& tree) {
    auto viewModel = std::make_shared<ShareForReviewViewModel>();
    viewModel->SetActiveAssetName(AsciiToUTF16("Opening titles"));
    viewModel->SetAssetTypeIcon(
        BindImageSupplyFunction("QuilloFolder_Sm", &moxui::utility::GetResourceManager));
    viewModel->SetUser(tree.user);
    tree.user->SetSelection(tree.folder);
    tree.user->SetProposedSelection(tree.folder);
    viewModel->SetReviewLinkURL(AsciiToUTF16("https://quillo.example/r/7Kq2mX"));
    viewModel->SetEncodingProgress(0.62);
    return viewModel;
}

bool WriteScreens(QDir const& folder, QString const& suffix) {
    SampleTree const tree;
    auto const viewModel = MakeViewModel(tree);
    QWidget window;
    window.resize(420, 460);
    QPushButton button(QStringLiteral("Share"), &window);
    button.setGeometry(340, 4, 70, 24);
    window.show();
    auto const anchor = moxui::backend::WrapWidget(&button);
    auto const popupManager = CreatePopupManager();
    popupManager->SetParent(anchor);
    auto const screenManager = CreateShareForReviewScreenManager(viewModel, popupManager);
    for (auto const& [name, id, signIn, isUploadWaiting] : kScreens) {
        viewModel->SetSignInProgress({signIn, kSince});
        viewModel->SetUploadWaitingSince(isUploadWaiting ? std::optional(kSince) : std::nullopt);
        viewModel->SetCurrentViewID(id);
        Settle();
        auto* const popup = PopupWindow();
        auto const path = folder.filePath(QString(name) + suffix + ".png");
        if (!popup || !popup->grab().save(path)) {
            std::fprintf(stderr, "quillo-screens: %s cannot be written\n", qPrintable(path));
            return false;
        }
    }
    return true;
}

int Run(int count, char** arguments) {
    for (int i = 1; i + 1 < count; ++i)
        if (std::strcmp(arguments[i], "--scale") == 0) qputenv("QT_SCALE_FACTOR", arguments[i + 1]);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    qputenv("TZ", "UTC");  // the pictures' times are the same everywhere
    qputenv("LC_ALL", "en_US");
    qunsetenv("LANGUAGE");

    QCommandLineParser options;
    options.setApplicationDescription("Writes a picture of every view of the share popup.");
    options.addHelpOption();
    options.addPositionalArgument("folder", "Where the pictures go.");
    options.addOptions({{"theme", "dark (default), light or high-contrast.", "theme", "dark"},
                        {"scale", "The screen's scale, 1 unless given.", "scale", "1"},
                        {"strings", "The folder of translated texts.", "folder"},
                        {"locale", "The language of the texts, with --strings.", "locale"}});
    options.process(application);
    auto const positional = options.positionalArguments();
    auto const theme = options.value("theme");
    QString suffix = "-" + theme;
    using moxui::skins::ThemeKind;
    std::map<QString, ThemeKind> const kinds{{"dark", ThemeKind::Dark},
                                             {"light", ThemeKind::Light},
                                             {"high-contrast", ThemeKind::HighContrast}};
    if (positional.size() != 1 || !kinds.contains(theme)) {
        std::fputs(qPrintable(options.helpText()), stderr);
        return 2;
    }
    if (options.isSet("locale")) {
        auto const locale = options.value("locale");
        if (!moxcore::config::Localizer::Load(options.value("strings").toStdString(),
                                              locale.toStdString())) {
            std::fprintf(stderr, "quillo-screens: there are no texts for \"%s\"\n",
                         qPrintable(locale));
            return EXIT_FAILURE;
        }
        suffix += "-" + locale;
        qputenv("LC_ALL", locale.toUtf8());
        QGuiApplication::setLayoutDirection(QLocale(locale).textDirection());
    }
    moxui::skins::ThemeProvider::SetTheme(kinds.at(theme));
    return WriteScreens(QDir(positional.front()), suffix) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace quilloscreens

int main(int count, char** arguments) {
    return quilloscreens::Run(count, arguments);
}
