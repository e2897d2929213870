#include "quillomoxui/model/sdk/FetchChildrenQueue.h"

#include <gmock/gmock.h>

#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "moxcore/threads/Clock.h"
#include "quillomoxui/model/sdk/ChildQueues.h"
#include "quillomoxui/model/sdk/SdkBackend.h"
#include "quillomoxui/model/sdk/SdkNodes.h"
#include "quillomoxui/model/sdk/WeakSingleton.h"
#include "quillosdk/Records.h"
#include "tests/quillomoxui/SignedIn.h"

namespace quillomoxui {
namespace {

using namespace std::chrono_literals;
using Sdk = model::QuilloCppSdkIntegration;
using testing::ElementsAre;

constexpr char kNoAssets[] = R"({"assets":[]})";
constexpr char kNoWorkspaces[] = R"({"workspaces":[]})";

class QueueTest : public ServiceTest {
protected:
    QueueTest() {
        EXPECT_TRUE(SignIn());
        before = transport.Count();
    }

    static std::shared_ptr<Sdk::QuilloSdkFolder> MakeFolder() {
        return std::make_shared<Sdk::QuilloSdkFolder>(
            quillosdk::Asset{quillocommon::Guid::CreateUnique(), "folder", "folder"}, nullptr);
    }

    /// Pushes the requests of `count` new folders, which the result keeps alive.
    static std::vector<std::shared_ptr<QuilloFolder>> PushFolders(int count) {
        std::vector<std::shared_ptr<QuilloFolder>> folders;
        for (int i = 0; i < count; ++i)
            folders.push_back(MakeFolder());
        for (auto const& folder : folders)
            folder->FetchChildren();
        return folders;
    }

    /// How many child requests have been sent.
    [[nodiscard]] std::size_t Sent() const { return transport.Count() - before; }

    /// The index of child request `number`.
    [[nodiscard]] std::size_t Index(std::size_t number) const { return before + number; }

    [[nodiscard]] std::string PathOf(std::size_t number) const {
        return transport.LineAt(Index(number));
    }

    static std::string PathOf(QuilloNode const& folder) {
        return "GET /v1/folders/" + folder.GetID().AsStdString() + "/children";
    }

private:
    std::size_t before = 0;
};

TEST_F(QueueTest, SendsUpToTheInitialLimitAndTheNextOneWindowLater) {
    std::vector<std::shared_ptr<QuilloAccount>> accounts;
    for (int i = 0; i < 201; ++i)
        accounts.push_back(std::make_shared<Sdk::QuilloSdkAccount>(
            quillosdk::Account{quillocommon::Guid::CreateUnique(), "account"}, nullptr));
    for (auto const& account : accounts)
        account->FetchChildren();
    executor.RunDue();
    EXPECT_EQ(Sent(), 200u);
    for (std::size_t i = 0; i < 200; ++i)
        transport.Answer(Index(i), 200, kNoWorkspaces);
    executor.AdvanceBy(60s);  // exactly as old as the window still counts
    EXPECT_EQ(Sent(), 200u);
    executor.AdvanceBy(5s);
    EXPECT_EQ(Sent(), 201u);
}

TEST_F(QueueTest, RequestsNeverAnsweredFreeTheirPlacesAfterTheWindow) {
    auto const folders = PushFolders(61);
    executor.RunDue();
    EXPECT_EQ(Sent(), 60u);
    executor.AdvanceBy(65s);
    EXPECT_EQ(Sent(), 61u);
    EXPECT_EQ(folders[0]->GetFetchChildrenState(), FetchChildrenState::Fetching);
}

TEST_F(QueueTest, APlaceIsFreeOneWindowAfterItsRequestWasSentWhateverWasAnsweredFirst) {
    auto folders = PushFolders(1);
    executor.RunDue();
    transport.Answer(Index(0), 200, kNoAssets,
                     {{"X-RATELIMIT-LIMIT", "2"}, {"X-RATELIMIT-WINDOW", "10000"}});
    executor.AdvanceBy(20s);
    auto const early = PushFolders(1);
    executor.AdvanceBy(8s);
    auto const late = PushFolders(2);
    executor.RunDue();
    ASSERT_EQ(Sent(), 3u);
    transport.Answer(Index(2), 200, kNoAssets);
    transport.Answer(Index(1), 200, kNoAssets);
    executor.AdvanceBy(7s);
    EXPECT_EQ(Sent(), 4u);
}

TEST_F(QueueTest, AClockThatIsSetBackHoldsNothingUp) {
    for (std::size_t const answered : {0u, 60u}) {
        SCOPED_TRACE(answered);
        auto const sentBefore = Sent();
        auto const folders = PushFolders(120);
        executor.RunDue();
        ASSERT_EQ(Sent() - sentBefore, 60u);
        for (std::size_t i = 0; i < answered; ++i)
            transport.Answer(Index(sentBefore + i), 200, kNoAssets);
        executor.SetClockBackBy(24h);
        executor.AdvanceBy(60s);
        EXPECT_EQ(Sent() - sentBefore, 60u);  // nor does it send too much
        executor.AdvanceBy(10s);
        EXPECT_EQ(Sent() - sentBefore, 120u);
        executor.AdvanceBy(10min);
    }
}

TEST_F(QueueTest, TakesOverTheLimitThatTheServiceAnnounces) {
    quillosdk::Headers const none;
    struct {
        char const* what;
        quillosdk::Headers headers;
        std::size_t sentAtOnce;  // by the 100 that follow the answer
        bool isDropped = false;
    } const cases[] = {
        {"a limit", {{"X-RATELIMIT-LIMIT", "10"}, {"X-RATELIMIT-WINDOW", "2500"}}, 9},
        {"no headers", {}, 59},
        {"only the limit", {{"X-RATELIMIT-LIMIT", "10"}}, 59},
        {"only the window", {{"X-RATELIMIT-WINDOW", "5000"}}, 59},
        {"a limit of 0", {{"X-RATELIMIT-LIMIT", "0"}, {"X-RATELIMIT-WINDOW", "5000"}}, 59},
        {"a limit below 0", {{"X-RATELIMIT-LIMIT", "-1"}, {"X-RATELIMIT-WINDOW", "5000"}}, 59},
        {"a window too short", {{"X-RATELIMIT-LIMIT", "10"}, {"X-RATELIMIT-WINDOW", "999"}}, 59},
        {"far below 0",
         {{"X-RATELIMIT-LIMIT", "-99999999999"}, {"X-RATELIMIT-WINDOW", "5000"}},
         59},
        {"as large as can be",
         {{"X-RATELIMIT-LIMIT", "99999999999"}, {"X-RATELIMIT-WINDOW", "99999999999"}},
         100},
        {"no number", {{"X-RATELIMIT-LIMIT", "ten"}, {"X-RATELIMIT-WINDOW", "5000"}}, 59, true},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.what);
        auto const start = Sent();
        auto const first = MakeFolder();
        first->FetchChildren();
        executor.RunDue();
        transport.Answer(Index(start), 200, kNoAssets, one.headers);
        EXPECT_EQ(first->GetFetchChildrenState(),
                  one.isDropped ? FetchChildrenState::Fetching : FetchChildrenState::Fetched);
        EXPECT_EQ(failures.All().empty(), !one.isDropped);
        auto const rest = PushFolders(100);
        executor.RunDue();
        EXPECT_EQ(Sent() - start, 1 + one.sentAtOnce);
    }
}

TEST_F(QueueTest, TheWindowIsInWholeSeconds) {
    auto const first = PushFolders(1);
    executor.RunDue();
    transport.Answer(Index(0), 200, kNoAssets,
                     {{"X-RATELIMIT-LIMIT", "1"}, {"X-RATELIMIT-WINDOW", "2900"}});
    executor.AdvanceBy(2s);
    auto const second = PushFolders(1);
    executor.RunDue();
    EXPECT_EQ(Sent(), 1u);
    executor.AdvanceBy(1us);
    auto const third = PushFolders(1);
    executor.RunDue();
    EXPECT_EQ(Sent(), 2u);
    EXPECT_EQ(PathOf(1), PathOf(*second[0]));
}

TEST_F(QueueTest, ARefusedRequestIsTheNextToBeSent) {
    auto folders = PushFolders(1);
    executor.RunDue();
    transport.Answer(Index(0), 200, kNoAssets,
                     {{"X-RATELIMIT-LIMIT", "2"}, {"X-RATELIMIT-WINDOW", "1000"}});
    executor.AdvanceBy(10s);
    folders = PushFolders(4);
    executor.RunDue();
    ASSERT_EQ(Sent(), 3u);
    transport.Answer(Index(2), 429);
    transport.Answer(Index(1), 429);
    model::SdkBackend::Instance().FetchFirst({folders[3], folders[1]});
    executor.AdvanceBy(5s);
    ASSERT_EQ(Sent(), 5u);
    EXPECT_EQ(PathOf(3), PathOf(*folders[0]));
    EXPECT_EQ(PathOf(4), PathOf(*folders[1]));
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(QueueTest, OtherRefusalsAndFailuresTellTheNodeNothingAndTheListenersWhy) {
    auto const folders = PushFolders(2);
    executor.RunDue();
    transport.Answer(Index(0), 500);
    transport.Fail(Index(1), quillosdk::kConnectionLost);
    for (auto const& folder : folders)
        EXPECT_EQ(folder->GetFetchChildrenState(), FetchChildrenState::Fetching);
    EXPECT_EQ(failures.All().size(), 2u);
    folders[0]->FetchChildren();
    executor.RunDue();
    ASSERT_EQ(Sent(), 3u);
    transport.Answer(Index(2), 200, kNoAssets);
    EXPECT_EQ(folders[0]->GetFetchChildrenState(), FetchChildrenState::Fetched);
}

TEST_F(QueueTest, ANodeThatIsGoneCostsItsPlaceForOneWindowAndNothingElse) {
    auto folders = PushFolders(60);
    auto const kept = MakeFolder();  // keeps the queue
    folders.clear();
    executor.RunDue();
    EXPECT_EQ(Sent(), 0u);
    kept->FetchChildren();
    executor.AdvanceBy(60s);
    EXPECT_EQ(Sent(), 0u);
    executor.AdvanceBy(5s);
    EXPECT_EQ(Sent(), 1u);
}

TEST_F(QueueTest, AnAnswerForANodeThatIsGoneIsDroppedAndRetired) {
    auto folders = PushFolders(60);
    auto const waiting = MakeFolder();
    executor.RunDue();
    folders.clear();
    waiting->FetchChildren();
    for (std::size_t i = 0; i < 60; ++i)
        transport.Answer(Index(i), 200, kNoAssets);
    executor.AdvanceBy(65s);
    EXPECT_EQ(Sent(), 61u);
}

TEST_F(QueueTest, LivesAsLongAsItsAdaptersAndForgetsWhatItWasTold) {
    auto folders = PushFolders(2);
    executor.RunDue();
    transport.Answer(Index(0), 200, kNoAssets,
                     {{"X-RATELIMIT-LIMIT", "5"}, {"X-RATELIMIT-WINDOW", "60000"}});
    auto const queue = std::weak_ptr(Sdk::WeakSingleton<Sdk::FetchFolderChildrenQueue>::Instance());
    EXPECT_FALSE(queue.expired());
    folders.clear();
    EXPECT_TRUE(queue.expired());
    transport.Answer(Index(1), 200, kNoAssets);  // for nobody
    folders = PushFolders(61);
    executor.RunDue();
    EXPECT_EQ(Sent(), 2 + 60u);
}

TEST_F(QueueTest, AnswersInsideTheCallFindTheirEntry) {
    auto const folders = PushFolders(60);
    for (auto const& folder : folders)
        On(PathOf(*folder), kNoAssets);
    executor.RunDue();
    for (auto const& folder : folders)
        EXPECT_EQ(folder->GetFetchChildrenState(), FetchChildrenState::Fetched);
}

TEST_F(QueueTest, APushBringsTheNextRunForwardAndSchedulesNoSecond) {
    auto const first = PushFolders(1);
    EXPECT_THAT(executor.Waiting(), ElementsAre(0ms));
    auto const second = PushFolders(1);
    EXPECT_THAT(executor.Waiting(), ElementsAre(0ms));
    executor.RunDue();
    EXPECT_THAT(executor.Waiting(), ElementsAre(5000ms));
    auto const third = PushFolders(1);
    executor.RunDue();
    EXPECT_EQ(Sent(), 3u);
}

TEST_F(QueueTest, BrowsingThroughManyFoldersLosesNoneAndAsksFirstForWhatIsLookedAt) {
    constexpr std::size_t kLimit = 60;
    std::vector<moxcore::threads::TimePoint> sentTimes;
    transport.SetResponder([&](auto const&) {
        sentTimes.push_back(moxcore::threads::Now());
        return quillosdk::HttpResponse{
            200, {{"X-RATELIMIT-LIMIT", "60"}, {"X-RATELIMIT-WINDOW", "60000"}}, kNoAssets};
    });
    std::vector<std::shared_ptr<QuilloFolder>> folders;
    for (int i = 0; i < 10; ++i) {
        for (auto const& folder : PushFolders(50))
            folders.push_back(folder);
        executor.AdvanceBy(500ms);
    }
    ASSERT_EQ(Sent(), kLimit);
    // One that was asked for already, one that never was and one of nobody's do not matter.
    model::SdkBackend::Instance().FetchFirst({folders[250]});
    model::SdkBackend::Instance().FetchFirst({folders[0], folders[499], MakeFolder(), folders[300],
                                              std::make_shared<QuilloFolder>(nullptr)});
    executor.AdvanceBy(60s);
    ASSERT_GT(Sent(), kLimit + 4);
    for (std::size_t i = 0; auto const expected : {499, 300, 250, 60})
        EXPECT_EQ(PathOf(kLimit + i++), PathOf(*folders[static_cast<std::size_t>(expected)]));

    executor.AdvanceBy(10min);
    EXPECT_EQ(Sent(), folders.size());
    for (auto const& folder : folders)
        EXPECT_EQ(folder->GetFetchChildrenState(), FetchChildrenState::Fetched);
    for (std::size_t i = kLimit; i < sentTimes.size(); ++i)
        ASSERT_GT(sentTimes[i] - sentTimes[i - kLimit], 60s) << "request " << i;
    transport.SetResponder(nullptr);
}

TEST_F(QueueTest, NoWindowEverHoldsMoreThanTheLimit) {
    constexpr int kLimit = 7;
    constexpr auto kWindow = 3s;
    std::vector<moxcore::threads::TimePoint> sentTimes;
    transport.SetResponder([&](auto const&) {
        sentTimes.push_back(moxcore::threads::Now());
        return std::nullopt;
    });
    auto folders = PushFolders(1);
    executor.RunDue();
    transport.Answer(Index(0), 200, kNoAssets,
                     {{"X-RATELIMIT-LIMIT", "7"}, {"X-RATELIMIT-WINDOW", "3000"}});

    // Answers come late and in any order, some refused, one in nine never.
    std::mt19937 random(1);
    std::vector<std::size_t> open;
    folders = PushFolders(500);
    for (std::size_t known = 1; known < 400;) {
        executor.AdvanceBy(std::chrono::milliseconds(random() % 400));
        for (; known < Sent(); ++known)
            if (random() % 9 != 0) open.push_back(known);
        if (!open.empty() && random() % 2) {
            auto const picked = open.begin() + static_cast<std::ptrdiff_t>(random() % open.size());
            transport.Answer(Index(*picked), random() % 5 ? 200 : 429, kNoAssets);
            open.erase(picked);
        }
    }
    transport.SetResponder(nullptr);
    for (std::size_t i = kLimit; i < sentTimes.size(); ++i)
        ASSERT_GT(sentTimes[i] - sentTimes[i - kLimit], kWindow) << "request " << i;
}

}  // namespace
}  // namespace quillomoxui
