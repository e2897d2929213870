// What a host sees of its shares.

#include <atomic>
#include <map>
#include <thread>
#include <utility>

#include "tests/quillohostkit/sharing/SharingTest.h"

namespace quillohostkit {
namespace {

using testing::ElementsAre;
using Phase = ShareState::Phase;

class ShareStepsTest : public SharingTest {
protected:
    ShareStepsTest() {
        button->SetAsset([this] { return asset; });
        button->SetExporter([](ExportJob& job) { WriteMovie(job); });
    }
    Asset asset{MakeMovie(), {}, AssetKind::Movie, "1"};
};

TEST_F(ShareStepsTest, GoThroughTheirPhases) {
    std::atomic<bool> mayEnd = false;
    button->SetExporter([&](ExportJob& job) {
        WriteMovie(job);
        job.SetProgress(0.5);
        while (!mayEnd)
            std::this_thread::yield();
    });
    std::vector<std::pair<Phase, bool>> seen;
    QObject context;
    QObject::connect(&State(), &ShareState::changed, &context, [&] {
        std::pair const now(State().phase(), State().canCancel());
        if (seen.empty() || seen.back() != now) seen.push_back(now);
        if (now.first == Phase::Exporting && State().progress() == 0.5) {
            EXPECT_EQ(Sharing::Get()->ViewModel()->GetEncodingProgress(), 0.5);
            mayEnd = true;
        }
    });
    OpenSignedIn();
    seen.clear();
    EXPECT_EQ(PressShare(), "");
    EXPECT_THAT(seen,
                ElementsAre(std::pair(Phase::Linking, true), std::pair(Phase::Exporting, true),
                            std::pair(Phase::Uploading, true), std::pair(Phase::Finishing, false),
                            std::pair(Phase::Idle, false)));
}

TEST_F(ShareStepsTest, ShowTheLinkUntilTheAssetHasChanged) {
    EXPECT_EQ(Share(), "");
    button->click();
    EXPECT_TRUE(State().canShareAgain());
    asset.revision = "2";
    button->click();
    EXPECT_FALSE(State().canShareAgain());

    QString exported;
    button->SetExporter([&](ExportJob& job) {
        exported = job.GetAsset().revision;
        WriteMovie(job);
    });
    OpenSignedIn();
    asset.revision = "3";  // while the popup is open
    EXPECT_EQ(PressShare(), "");
    EXPECT_EQ(exported, "3");
    button->click();
    EXPECT_TRUE(State().canShareAgain());
}

TEST_F(ShareStepsTest, AreSeenInEveryWindowAndStayThoseOfTheirOwn) {
    std::atomic<bool> mayEnd = false;
    button->SetExporter([&](ExportJob& job) {
        WriteMovie(job);
        while (!mayEnd)
            std::this_thread::yield();
    });
    QMainWindow otherWindow;
    auto* const other = new ShareButton(&otherWindow);
    otherWindow.show();
    int asked = 0;
    other->SetAsset([&asked] {
        ++asked;
        return Asset{MakeMovie(), {}, AssetKind::Movie, {}};
    });
    OpenSignedIn();
    Press("Share");
    Until([this] { return State().phase() == Phase::Exporting; });
    other->click();
    EXPECT_EQ(other->GetState()->phase(), Phase::Exporting);
    EXPECT_EQ(asked, 0) << "its turn comes when the share has ended";
    mayEnd = true;
    Until([this] { return State().phase() == Phase::Idle; });
    EXPECT_EQ(State().version(), 1);
    EXPECT_EQ(other->GetState()->version(), 0);
    other->click();
    EXPECT_EQ(asked, 1);
}

TEST_F(ShareStepsTest, TakeUpTheSessionThatIsKeptWithoutAWord) {
    Sharing::Get()->SignOut();
    Until([this] { return State().signedInAs().isEmpty(); });
    SignIn();
    EXPECT_EQ(State().message().toStdString(),
              "Signed in as " + State().signedInAs().toStdString() + ".");
    delete std::exchange(button, nullptr);
    Sharing::End();
    button = new ShareButton(&window);
    Until([this] { return !State().signedInAs().isEmpty(); });
    EXPECT_EQ(State().message(), "");
}

/// A host's project file.
struct OwnStrings : AssetStrings {
    std::optional<QString> Read(Asset const& asset, QString const& key) override {
        auto const found = strings.find({asset.path, key});
        return found == strings.end() ? std::nullopt : std::optional(found->second);
    }
    void Write(Asset const& asset, QString const& key,
               std::optional<QString> const& value) override {
        strings.erase({asset.path, key});
        if (value) strings[{asset.path, key}] = *value;
    }
    std::map<std::pair<QString, QString>, QString> strings;
};

TEST_F(ShareStepsTest, KeepTheirStringsWithTheHost) {
    auto const strings = std::make_shared<OwnStrings>();
    button->GetController()->SetAssetStrings(strings);
    EXPECT_EQ(Share(), "");
    auto const link = State().link();
    asset.path = MakeMovie();  // the project has moved, and its strings with it
    for (auto& [key, value] : std::exchange(strings->strings, {}))
        strings->strings[{asset.path, key.second}] = value;
    EXPECT_EQ(Share(), "");
    EXPECT_EQ(State().link(), link);
    EXPECT_EQ(State().version(), 2);
    button->GetController()->SetAssetStrings(nullptr);
    EXPECT_EQ(Share(), "");
    EXPECT_NE(State().link(), link) << "the kit knows nothing of that asset";
}

}  // namespace
}  // namespace quillohostkit
