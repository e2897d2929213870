#pragma once

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEventLoop>
#include <QMainWindow>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "quilloauth/Browser.h"
#include "quillohostkit/CopyExporter.h"
#include "quillohostkit/ServiceSettings.h"
#include "quillohostkit/ShareButton.h"
#include "quillohostkit/session/ChildLists.h"
#include "quillohostkit/sharing/Sharing.h"
#include "quillomoxui/model/QuilloProject.h"
#include "tests/support/ServiceProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {

/// Runs Qt's loop until `done`, which something on the main thread brings about.
inline void Until(std::function<bool()> const& done) {
    QEventLoop loop;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     &loop, [&] {
                         if (done()) loop.quit();
                     });
    if (!done()) loop.exec();
}

/// The visible button of this name, wherever it is; null when there is none.
inline QAbstractButton* FindButton(QString const& name) {
    for (auto* const widget : QApplication::allWidgets())
        if (auto* const button = qobject_cast<QAbstractButton*>(widget);
            button && button->isVisible() && button->text() == name &&
            !qobject_cast<ShareButton*>(button))
            return button;
    return nullptr;
}

inline void Press(QString const& name) {
    Until([&] {
        auto* const button = FindButton(name);
        return button && button->isEnabled();
    });
    FindButton(name)->click();
}

/// A window with a Share button, and the real service, which trusts the user of this machine. The
/// browser is never opened.
class SharingTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        directory = std::make_unique<testsupport::TemporaryDirectory>();
        moxcore::filesupport::commondirs::SetUserRoot(directory->Text());
        service = std::make_unique<testsupport::ServiceProcess>(directory->Path() / "service");
        QApplication::setApplicationName("host-of-the-test");
        ASSERT_EQ(SetServiceSettings({.address = QString::fromStdString(service->Address()),
                                      .name = {},
                                      .clientID = {},
                                      .browser = {},
                                      .dataDirectory = QString::fromStdString(
                                          (directory->Path() / "kit").string())}),
                  "");
    }
    static void TearDownTestSuite() {
        Sharing::End();
        service.reset();
        directory.reset();
    }

    SharingTest() {
        quilloauth::SetBrowserOpener(
            [](auto const&, auto const&) { ADD_FAILURE() << "the browser was opened"; });
        QApplication::setQuitOnLastWindowClosed(false);
        window.show();
    }
    ~SharingTest() override {
        delete button;
        Until([] { return !Sharing::Get()->IsSharing(); });
        quilloauth::SetBrowserOpener({});
    }

    /// A movie of the test's own.
    [[nodiscard]] static QString MakeMovie(std::string const& content = "movie") {
        static int number = 0;
        auto const file =
            directory->Write("clip" + std::to_string(++number) + ".mp4", content).string();
        return QString::fromStdString(file);
    }

    void SignIn() {
        Sharing::Get()->SignIn();
        Until([this] { return !State().signedInAs().isEmpty(); });
    }

    /// Opens the popup and selects the first project there is.
    void OpenSignedIn() {
        button->click();
        if (State().signedInAs().isEmpty()) SignIn();
        auto const user = Sharing::Get()->ViewModel()->GetUser();
        if (!user->GetSelection()) {
            ChildLists lists;
            std::shared_ptr<quillomoxui::QuilloNode> node = user;
            while (!quillomoxui::NodeAs<quillomoxui::QuilloProject>(node)) {
                auto const children = lists.ChildrenOf(node);
                Until([&] { return children.IsComplete(); });
                node = children.Get().at(0);
            }
            user->SetSelection(
                quillomoxui::NodeAs<quillomoxui::QuilloProject>(node)->GetRootFolder());
        }
        if (State().canShareAgain()) button->GetController()->ShareAgain();
        Until([] { return FindButton("Share") != nullptr; });
    }

    /// Shares what the button has and returns the failure's reason; empty when it is shared.
    std::string Share() {
        OpenSignedIn();
        return PressShare();
    }
    std::string PressShare() {
        std::optional<std::string> end;
        QObject context;
        QObject::connect(&State(), &ShareState::shareFinished, &context, [&] { end = ""; });
        QObject::connect(&State(), &ShareState::shareFailed, &context,
                         [&](QString const& reason) { end = reason.toStdString(); });
        Press("Share");
        Until([&] { return end.has_value(); });
        return *end;
    }

    [[nodiscard]] ShareState& State() const { return *button->GetState(); }

    /// What exports have left in the cache directory, once no exporter is on its thread any more.
    [[nodiscard]] static std::vector<std::string> Exports() {
        EXPECT_TRUE(ExportRun::AwaitExporters(std::chrono::minutes(1)));
        std::vector<std::string> names;
        auto const cache =
            moxcore::string::UTF16to8(moxcore::filesupport::commondirs::UserCacheDir().FullPath());
        for (auto const& entry : std::filesystem::directory_iterator(cache))
            names.push_back(entry.path().filename());
        return names;
    }

    inline static std::unique_ptr<testsupport::TemporaryDirectory> directory;
    inline static std::unique_ptr<testsupport::ServiceProcess> service;
    QMainWindow window;
    ShareButton* button = new ShareButton(&window);
};

/// Writes a movie to the job's file.
inline void WriteMovie(ExportJob const& job) {
    std::ofstream(job.OutputFile().toStdString()) << "exported movie";
}

}  // namespace quillohostkit
