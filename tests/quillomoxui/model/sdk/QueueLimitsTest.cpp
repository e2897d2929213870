#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <vector>

#include "quillomoxui/model/sdk/SdkNodes.h"
#include "quillosdk/Records.h"
#include "tests/quillomoxui/SignedIn.h"

namespace quillomoxui {
namespace {

using namespace std::chrono_literals;
using Sdk = model::QuilloCppSdkIntegration;
using testing::ElementsAre;
using testing::IsEmpty;

class QueueLimitsTest : public ServiceTest {
protected:
    QueueLimitsTest() {
        EXPECT_TRUE(SignIn());
        before = transport.Count();
    }

    [[nodiscard]] std::size_t Sent() const { return transport.Count() - before; }

    static std::vector<std::shared_ptr<QuilloNode>> Push(
        std::size_t count, std::function<std::shared_ptr<QuilloNode>()> const& make) {
        std::vector<std::shared_ptr<QuilloNode>> nodes;
        for (std::size_t i = 0; i < count; ++i) {
            nodes.push_back(make());
            nodes.back()->FetchChildren();
        }
        return nodes;
    }

    static std::shared_ptr<QuilloNode> MakeWorkspace() {
        return std::make_shared<Sdk::QuilloSdkWorkspace>(
            quillosdk::Workspace{quillocommon::Guid::CreateUnique(), "workspace"}, nullptr);
    }

    static std::shared_ptr<QuilloNode> MakeFolder() {
        return std::make_shared<Sdk::QuilloSdkFolder>(
            quillosdk::Asset{quillocommon::Guid::CreateUnique(), "folder", "folder"}, nullptr);
    }

    std::size_t before = 0;
};

TEST_F(QueueLimitsTest, WorkspacesStartWithAThousandRequestsInASecond) {
    auto const workspaces = Push(1001, MakeWorkspace);
    executor.RunDue();
    ASSERT_EQ(Sent(), 1000u);
    for (std::size_t i = 0; i < 1000; ++i)
        transport.Answer(before + i, 200, R"({"projects":[]})");
    executor.AdvanceBy(1s);
    EXPECT_EQ(Sent(), 1000u);
    auto const more = Push(1, MakeWorkspace);
    executor.AdvanceBy(1us);
    auto const evenMore = Push(1, MakeWorkspace);  // has the queue look now
    executor.RunDue();
    EXPECT_EQ(Sent(), 1003u);
}

TEST_F(QueueLimitsTest, TheLimitIsTakenFromARefusalAndAnErrorToo) {
    for (int const status : {429, 403, 404, 500}) {
        SCOPED_TRACE(status);
        auto const start = Sent();
        auto const first = Push(1, MakeFolder);
        executor.RunDue();
        transport.Answer(before + start, status, "",
                         {{"X-RATELIMIT-LIMIT", "3"}, {"X-RATELIMIT-WINDOW", "1000"}});
        auto const rest = Push(10, MakeFolder);
        executor.RunDue();
        EXPECT_EQ(Sent() - start, 3u);
    }
}

TEST_F(QueueLimitsTest, EachRequestLeavesTheWindowByItsOwnTime) {
    auto folders = Push(1, MakeFolder);
    executor.RunDue();
    transport.Answer(before, 200, R"({"assets":[]})",
                     {{"X-RATELIMIT-LIMIT", "2"}, {"X-RATELIMIT-WINDOW", "20000"}});
    executor.AdvanceBy(12s);
    auto const second = Push(1, MakeFolder);
    executor.RunDue();
    transport.Answer(before + 1, 200, R"({"assets":[]})");
    executor.AdvanceBy(10s);  // the first has left, the second has not
    auto const rest = Push(2, MakeFolder);
    executor.RunDue();
    EXPECT_EQ(Sent(), 3u);
}

TEST_F(QueueLimitsTest, AQueueSleepsOnceNothingIsLeftInItsWindow) {
    auto const folders = Push(1, MakeFolder);
    executor.RunDue();
    transport.Answer(before, 200, R"({"assets":[]})");
    executor.AdvanceBy(60s);
    EXPECT_THAT(executor.Waiting(), ElementsAre(5s));
    executor.AdvanceBy(5s);
    EXPECT_THAT(executor.Waiting(), IsEmpty());
}

}  // namespace
}  // namespace quillomoxui
