// The widgets that come with the kit, and what it does with the host's window.

#include <QCloseEvent>
#include <QMessageBox>
#include <QProgressBar>
#include <QTimer>

#include "moxui/skins/ThemeProvider.h"
#include "quillohostkit/PreferencesPage.h"
#include "quillohostkit/ShareStatusLabel.h"
#include "quillohostkit/widgets/ElidedLabel.h"
#include "tests/quillohostkit/sharing/SharingTest.h"

namespace quillohostkit {
namespace {

using testing::Contains;

/// What the visible labels of `widget` say, as an assistive tool hears it.
std::vector<std::string> Labels(QWidget const& widget) {
    std::vector<std::string> texts;
    for (auto* const child : widget.findChildren<QWidget*>())
        if (dynamic_cast<ElidedLabel*>(child) && !child->isHidden())
            texts.push_back(child->accessibleName().toStdString());
    return texts;
}

/// The button whose text is `text`, its mnemonic aside.
QAbstractButton* ButtonOf(QWidget const& widget, QString const& text) {
    for (auto* const button : widget.findChildren<QAbstractButton*>())
        if (button->text().remove('&') == text) return button;
    return nullptr;
}

class ReadyWidgetsTest : public SharingTest {
protected:
    ReadyWidgetsTest() {
        button->SetAsset([this] { return asset; });
        button->SetExporter(std::make_shared<Held>());
    }

    /// An export that goes on until it is cancelled, or finished from outside.
    struct Held : Exporter {
        [[nodiscard]] Thread GetThread() const override { return Thread::Main; }
        void Export(ExportJob& newJob) override {
            newJob.FinishLater();
            newJob.OnCancelled([newJob] {});
            job = newJob;
        }
        static inline std::optional<ExportJob> job;
    };
    void BeginExport() {
        OpenSignedIn();
        Press("Share");
        Until([this] { return State().phase() == ShareState::Phase::Exporting; });
    }

    Asset asset{MakeMovie(), "Titles", AssetKind::Movie, {}};
};

TEST_F(ReadyWidgetsTest, ShowHowFarAShareIsAndCancelIt) {
    auto* const label = new ShareStatusLabel(button->GetController(), &window);
    auto* const bar = label->findChild<QProgressBar*>();
    auto* const cancel = ButtonOf(*label, "Cancel");
    EXPECT_TRUE(bar->isHidden() && cancel->isHidden());
    BeginExport();
    EXPECT_THAT(Labels(*label), Contains("Share: Exporting \"Titles\""));
    EXPECT_TRUE(!bar->isHidden() && bar->maximum() == 0) << "nobody knows how far it is";
    Held::job->SetProgress(0.25);
    Until([this] { return State().progress() == 0.25; });
    EXPECT_EQ(bar->value() * 4, bar->maximum());
    cancel->click();
    Until([this] { return State().phase() == ShareState::Phase::Idle; });
    EXPECT_THAT(Labels(*label),
                testing::ElementsAre("Message: The share of \"Titles\" was cancelled."));
    EXPECT_TRUE(bar->isHidden() && cancel->isHidden());

    button->SetExporter([](ExportJob& job) { WriteMovie(job); });
    bool wasCancelRefused = false;
    QObject::connect(&State(), &ShareState::changed, label, [&] {
        if (State().phase() == ShareState::Phase::Finishing)
            wasCancelRefused = !cancel->isEnabled();
    });
    EXPECT_EQ(Share(), "");
    EXPECT_TRUE(wasCancelRefused) << "the movie is there";
    delete label;
}

TEST_F(ReadyWidgetsTest, ShowTheAccountAndTheDefaultDestination) {
    if (State().signedInAs().isEmpty()) SignIn();
    Sharing::Get()->SetDefaultDestination(ChosenLocation{{}, "River/Editorial"});
    PreferencesPage page(button->GetController());
    EXPECT_THAT(Labels(page),
                testing::IsSupersetOf({"Account: " + State().signedInAs().toStdString(),
                                       std::string("Default destination: River/Editorial")}));
    ButtonOf(page, "Clear")->click();
    EXPECT_THAT(Labels(page), Contains("Default destination: None"));
    EXPECT_FALSE(ButtonOf(page, "Clear")->isEnabled());
    EXPECT_FALSE(Sharing::Get()->DefaultDestination().has_value());

    ButtonOf(page, "Sign Out")->click();
    Until([this] { return State().signedInAs().isEmpty(); });
    EXPECT_THAT(Labels(page), Contains("Account: Nobody is signed in"));
    ButtonOf(page, "Sign In")->click();
    Until([this] { return !State().signedInAs().isEmpty(); });
    EXPECT_NE(ButtonOf(page, "Sign Out"), nullptr);
}

TEST_F(ReadyWidgetsTest, FollowThePaletteWhileThePopupIsOpen) {
    using moxui::skins::ThemeKind;
    OpenSignedIn();
    for (auto const& [back, text, kind] : {std::tuple(Qt::black, Qt::white, ThemeKind::Dark),
                                           std::tuple(Qt::white, Qt::black, ThemeKind::Light),
                                           std::tuple(Qt::darkGray, Qt::white, ThemeKind::Dark)}) {
        QPalette palette;
        palette.setColor(QPalette::Window, back);
        palette.setColor(QPalette::WindowText, text);
        window.setPalette(palette);
        EXPECT_EQ(moxui::skins::ThemeProvider::Get().GetKind(), kind);
    }
}

TEST_F(ReadyWidgetsTest, AskBeforeAWindowIsClosedThatAShareNeeds) {
    using When = ShareController::WhenClosed;
    struct Case {
        When when;
        bool isLast;         // the program ends with the window
        char const* answer;  // null: no question
        bool isClosed;
    };
    QApplication::setQuitOnLastWindowClosed(true);
    QWidget other;
    BeginExport();
    for (auto const& [when, isLast, answer, isClosed] :
         {Case{When::AskIfLast, true, "Keep Sharing", false},
          Case{When::AskIfLast, false, nullptr, true}, Case{When::GoOn, false, nullptr, true},
          Case{When::Ask, false, "Keep Sharing", false},
          Case{When::Ask, false, "Stop and Quit", true}}) {
        auto const name = std::to_string(static_cast<int>(when)) + (answer ? answer : "");
        window.show();
        other.setVisible(!isLast);
        button->GetController()->SetWhenClosed(when);
        std::string question;
        QTimer::singleShot(0, &window, [&, pressed = answer] {
            auto* const box = window.findChild<QMessageBox*>();
            if (!box) return;
            question = box->text().toStdString();
            ButtonOf(*box, pressed ? pressed : "Keep Sharing")->click();
        });
        EXPECT_EQ(window.close(), isClosed) << name;
        EXPECT_EQ(question.starts_with("\"Titles\" is still being shared"), answer != nullptr)
            << name << ": " << question;
        EXPECT_TRUE(Sharing::Get()->IsSharing()) << name;
        QCoreApplication::processEvents();
    }
    button->GetController()->Cancel();
    Until([] { return !Sharing::Get()->IsSharing(); });
    window.show();
    EXPECT_TRUE(window.close()) << "nothing is lost";
    QApplication::setQuitOnLastWindowClosed(false);
}

TEST_F(ReadyWidgetsTest, LetGoOfTheExporterOfAButtonThatIsGone) {
    std::weak_ptr<Exporter> exporter;
    {
        auto const own = std::make_shared<Held>();
        exporter = own;
        button->SetExporter(std::shared_ptr<Exporter>(own));
    }
    OpenSignedIn();
    EXPECT_FALSE(exporter.expired());
    delete std::exchange(button, nullptr);
    EXPECT_TRUE(exporter.expired()) << "what it refers to may be gone";
    button = new ShareButton(&window);
}

TEST_F(ReadyWidgetsTest, GreetTheUserWhoSignsInWhileTheKeptSessionIsBeingRead) {
    if (State().signedInAs().isEmpty()) SignIn();
    delete std::exchange(button, nullptr);
    Sharing::End();
    button = new ShareButton(&window);
    Sharing::Get()->Resume();
    SignIn();
    EXPECT_THAT(State().message().toStdString(), testing::StartsWith("Signed in as "));
}

}  // namespace
}  // namespace quillohostkit
