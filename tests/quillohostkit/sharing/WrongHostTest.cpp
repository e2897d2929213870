// Hosts that do everything wrong: each gets a clear message, and nothing is lost.

#include <QMessageBox>
#include <QThread>
#include <atomic>
#include <limits>
#include <stdexcept>
#include <thread>

#include "tests/quillohostkit/sharing/SharingTest.h"

namespace quillohostkit {
namespace {

using testing::HasSubstr;

class WrongHostTest : public SharingTest {
protected:
    /// An exporter that waits on its thread until it is let go, or cancelled.
    struct Gate {
        std::atomic<bool> isEntered = false;
        std::atomic<bool> isOpen = false;
        std::atomic<bool> hasSeenCancel = false;

        void Pass(ExportJob const& job) {
            WriteMovie(job);
            isEntered = true;
            job.SetProgress(0.5);
            while (!isOpen && !job.IsCancelled())
                std::this_thread::yield();
            hasSeenCancel = job.IsCancelled();
        }
    };

    /// Begins a share that stays at its export.
    void BeginExport() {
        button->SetAsset(Asset{movie, {}, AssetKind::Movie, {}});
        button->SetExporter([gate = gate](ExportJob& job) { gate->Pass(job); });
        OpenSignedIn();
        Press("Share");
        Until([this] { return State().progress() == 0.5; });
    }

    QString const movie = MakeMovie();
    std::shared_ptr<Gate> const gate = std::make_shared<Gate>();
};

TEST_F(WrongHostTest, HearsWhyItsExportIsNoMovieAndSharesAgainUnderTheSameLink) {
    struct Case {
        char const* name;
        std::function<void(ExportJob&)> exporter;
        std::string reason;  // empty: it is a movie all the same
    };
    Case const cases[] = {
        {"throws", [](ExportJob&) { throw std::runtime_error("No codec."); }, "No codec."},
        {"throws a number", [](ExportJob&) { throw 1; }, "unknown reason"},
        {"throws after it has written",
         [](ExportJob& job) {
             WriteMovie(job);
             throw std::runtime_error("Disk full.");
         },
         "Disk full."},
        {"exports nothing", [](ExportJob&) {}, "has made no movie."},
        {"exports an empty file",
         [](ExportJob& job) { std::ofstream(job.OutputFile().toStdString()); }, "is empty"},
        {"fails without a reason", [](ExportJob& job) { job.Fail({}); }, "without a reason"},
        {"forgets the job", [](ExportJob& job) { job.FinishLater(); }, "ended without a movie"},
        {"never reports progress", [](ExportJob& job) { WriteMovie(job); }, ""},
        {"reports nonsense",
         [](ExportJob& job) {
             for (double fraction : {-1.0, 7.0, std::numeric_limits<double>::quiet_NaN()})
                 job.SetProgress(fraction);
             WriteMovie(job);
         },
         ""},
        {"goes on after its end",
         [](ExportJob& job) {
             WriteMovie(job);
             job.Finish();
             job.Fail("Too late.");
             job.SetProgress(0.1);
         },
         ""},
    };
    button->SetAsset(Asset{movie, {}, AssetKind::Movie, {}});
    int shared = 0;
    QString link;
    for (auto const& one : cases) {
        button->SetExporter(one.exporter);
        OpenSignedIn();
        auto const end = PressShare();
        EXPECT_EQ(end.empty(), one.reason.empty()) << one.name;
        EXPECT_THAT(end, HasSubstr(one.reason)) << one.name;
        EXPECT_THAT(Exports(), testing::IsEmpty()) << one.name;
        if (!one.reason.empty()) {
            EXPECT_THAT(State().message().toStdString(), HasSubstr(one.reason));
            continue;
        }
        EXPECT_EQ(State().version(), ++shared) << one.name;
        if (link.isEmpty()) link = State().link();
        EXPECT_TRUE(State().link() == link && !link.isEmpty()) << one.name;
    }
}

TEST_F(WrongHostTest, CancelsAndNobodyWaitsForTheExporter) {
    BeginExport();
    EXPECT_TRUE(State().canCancel());
    button->GetController()->Cancel();
    Until([this] { return State().phase() == ShareState::Phase::Idle; });
    EXPECT_THAT(State().message().toStdString(), HasSubstr("was cancelled"));
    Until([] { return Exports().empty(); });  // once the exporter has seen that it is cancelled
    EXPECT_TRUE(gate->hasSeenCancel);
}

TEST_F(WrongHostTest, DestroysItsButtonDuringTheExport) {
    BeginExport();
    delete button;
    gate->isOpen = true;
    Until([] { return !Sharing::Get()->IsSharing(); });
    button = new ShareButton(&window);
    button->SetAsset(Asset{movie, {}, AssetKind::Movie, {}});
    OpenSignedIn();
    EXPECT_EQ(State().version(), 1) << "it was shared in the background";
}

TEST_F(WrongHostTest, DestroysItsButtonBeforeTheExport) {
    button->SetAsset(Asset{movie, {}, AssetKind::Movie, {}});
    button->SetExporter([gate = gate](ExportJob& job) { gate->Pass(job); });
    OpenSignedIn();
    QObject::connect(&State(), &ShareState::changed, button, [this] {
        if (State().phase() == ShareState::Phase::Linking)
            std::exchange(button, nullptr)->deleteLater();
    });
    Press("Share");
    Until([this] { return button == nullptr; });
    Until([] { return !Sharing::Get()->IsSharing(); });
    EXPECT_FALSE(gate->isEntered) << "what it needs may be gone";
}

TEST_F(WrongHostTest, EndsInTheMidstOfAnExport) {
    BeginExport();
    Sharing::End();
    EXPECT_TRUE(gate->hasSeenCancel);
    EXPECT_THAT(Exports(), testing::IsEmpty());
    button->click();  // of an application that is gone
    delete std::exchange(button, nullptr);
    button = new ShareButton(&window);
    button->SetAsset(Asset{movie, {}, AssetKind::Movie, {}});
    button->SetExporter([](ExportJob& job) { WriteMovie(job); });
    EXPECT_EQ(Share(), "");
}

TEST_F(WrongHostTest, CallsFromAnotherThread) {
    button->SetAsset([this] {
        EXPECT_EQ(QThread::currentThread(), qApp->thread());
        return Asset{movie, {}, AssetKind::Movie, {}};
    });
    std::thread([this] {
        button->GetController()->SetExporter([](ExportJob& job) { WriteMovie(job); });
        button->GetController()->Open();
    }).join();
    EXPECT_EQ(Share(), "");
}

TEST_F(WrongHostTest, ShowsNoMessages) {
    button->SetAsset(Asset{movie, {}, AssetKind::Movie, {}});
    button->SetExporter([](ExportJob&) { throw std::runtime_error("No codec."); });
    OpenSignedIn();
    Press("Share");
    QMessageBox* box = nullptr;
    Until([&] { return (box = window.findChild<QMessageBox*>()) != nullptr; });
    EXPECT_EQ(box->text(), "No codec.");
    delete box;
}

TEST_F(WrongHostTest, HasNothingToShareOrThrowsWhenAsked) {
    button->click();
    EXPECT_EQ(State().message(), "There is nothing to share.");
    button->SetAsset([]() -> Asset { throw std::runtime_error("No project is open."); });
    button->click();
    EXPECT_EQ(State().message(), "No project is open.");
}

}  // namespace
}  // namespace quillohostkit
