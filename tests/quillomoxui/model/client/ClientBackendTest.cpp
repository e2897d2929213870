#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "moxcore/messaging/Station.h"
#include "quilloauth/AuthManager.h"
#include "quilloclient/ServiceDatastore.h"
#include "quillomoxui/model/client/ClientNodes.h"
#include "tests/quillomoxui/SignedIn.h"
#include "tests/support/FakeBrowser.h"

namespace quillomoxui {
namespace {

using Client = model::QuilloClientIntegration;
using moxcore::messaging::HashMessageTypeNameToMessageID;
using moxcore::messaging::Message;
using moxcore::utility::Guid;
using quillo::QuilloDatastore;
using State = FetchChildrenState;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::Id;
using testsupport::Record;

class ClientBackendTest : public ServiceTest {
protected:
    ClientBackendTest() {
        ServeTree();
        QuilloDatastore::SetDatastore(quillo::ServiceDatastore::Create());
    }

    ~ClientBackendTest() override {
        Client::SignOut();
        Settle();
        QuilloDatastore::SetDatastore(nullptr);
    }

    static std::shared_ptr<QuilloDatastore> Datastore() {
        return QuilloDatastore::GetDatastore({});
    }

    /// Returns once the datastore knows whether somebody is signed in, and has nothing to do.
    void Settle() {
        auto const list = Datastore()->GetAccountList();
        executor.RunUntil([&] { return list.IsComplete(); });
        executor.RunDue();
    }

    /// The signed-in user's root of the tree.
    std::shared_ptr<QuilloUser> CurrentUser() {
        std::shared_ptr<QuilloUser> user;
        Client::GetCurrentUser(
            [&](std::shared_ptr<QuilloUser> const& received) { user = received; });
        Settle();
        return user;
    }

    std::shared_ptr<QuilloUser> FetchedUser() {
        auto user = CurrentUser();
        user->FetchChildren();
        executor.RunDue();
        return user;
    }

    template <class Type>
    void Post(Guid const& subject = {}) {
        moxcore::messaging::PostMessageToStation(
            Datastore()->GetStationID(),
            Message(HashMessageTypeNameToMessageID(Type::kTypeName), subject));
    }

    static std::shared_ptr<QuilloFolder> RootFolderOf(std::shared_ptr<QuilloUser> const& user) {
        return user->GetAccounts()
            .at(0)
            ->GetWorkspaces()
            .at(1)
            ->GetProjects()
            .at(1)
            ->GetRootFolder();
    }
};

TEST_F(ClientBackendTest, TheTreeFillsItselfDownToTheRootFolders) {
    auto const user = CurrentUser();
    ASSERT_TRUE(user);
    EXPECT_EQ(moxcore::string::UTF16to8(user->GetName()), "Jane");
    EXPECT_EQ(user->GetFetchChildrenState(), State::NotFetched);
    user->FetchChildren();
    EXPECT_EQ(user->GetFetchChildrenState(), State::Fetching);
    executor.RunDue();

    auto const account = user->GetAccounts().at(0);
    EXPECT_THAT(Names(account->GetChildNodes()), ElementsAre("Archive", "promos"));
    auto const full = account->GetWorkspaces().at(1);
    EXPECT_THAT(Names(full->GetChildNodes()), ElementsAre("spot 9", "Spot 10"));
    EXPECT_EQ(full->GetFetchChildrenState(), State::Fetched);
    auto const project = full->GetProjects().at(1);
    EXPECT_EQ(project->GetFetchChildrenState(), State::NotFetched);
    auto const root = project->GetRootFolder();
    EXPECT_EQ(root->GetID().AsStdString(), Id(6));
    EXPECT_EQ(root->GetParent(), project);
    EXPECT_TRUE(root->GetName().empty());
    EXPECT_EQ(root->GetFetchChildrenState(), State::NotFetched);
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(ClientBackendTest, AFolderTakesTheTypesItKnows) {
    On("GET /v1/folders/" + Id(6) + "/children",
       R"({"assets":[)" + Record(10, "b.mov", R"(,"type":"file")") + "," +
           Record(11, "Shots", R"(,"type":"folder")") + "," +
           Record(12, "Audio", R"(,"type":"folder")") + "," +
           Record(13, "Cut", R"(,"type":"version_stack")") + "," +
           Record(14, "Not a folder", R"(,"type":"Folder")") + "]}");
    auto const root = RootFolderOf(FetchedUser());
    root->FetchChildren();
    executor.RunDue();
    EXPECT_THAT(Names(root->GetChildNodes()), ElementsAre("b.mov", "Cut", "Audio", "Shots"));
    EXPECT_EQ(root->GetFetchChildrenState(), State::Fetched);
    EXPECT_EQ(root->GetFolders().at(0)->GetParent(), root);
    EXPECT_EQ(root->GetFiles().at(0)->GetID().AsStdString(), Id(10));
}

TEST_F(ClientBackendTest, ATreeThatHasNoEndIsCutOffAndReported) {
    ServeEndlessTree();
    auto const user = FetchedUser();
    ExpectAnEndTo(RootFolderOf(user));
}

TEST_F(ClientBackendTest, EachNodeFetchesAgainWhenItsOwnListHasChanged) {
    On("GET /v1/folders/" + Id(6) + "/children",
       R"({"assets":[)" + Record(11, "Shots", R"(,"type":"folder")") + "]}");
    auto const user = FetchedUser();
    auto const root = RootFolderOf(user);
    auto const account = user->GetAccounts().at(0);
    auto const workspace = account->GetWorkspaces().at(1);
    auto const project = workspace->GetProjects().at(1);
    root->FetchChildren();
    executor.RunDue();
    auto const shots = root->GetFolders().at(0);
    struct {
        char const* what;
        std::shared_ptr<QuilloNode> node;
        std::function<void(Guid const&)> post;
    } const cases[] = {
        {"folder", root, [&](Guid const& id) { Post<QuilloDatastore::AssetListChanged>(id); }},
        {"workspace", workspace,
         [&](Guid const& id) { Post<QuilloDatastore::ProjectListChanged>(id); }},
        {"account", account, [&](Guid const& id) { Post<QuilloDatastore::TeamListChanged>(id); }},
        {"user", user, [&](Guid const&) { Post<QuilloDatastore::AccountListChanged>(); }},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.what);
        auto const before = one.node->GetChildNodes();
        for (auto const& other : cases)  // other types with its ID, and its type with another ID
            if (other.node != one.node && other.node != user) other.post(one.node->GetID());
        if (one.node != user) one.post(Guid::CreateUnique());
        executor.RunDue();
        EXPECT_EQ(one.node->GetChildNodes(), before);

        one.post(one.node->GetID());
        EXPECT_EQ(one.node->GetFetchChildrenState(), State::Fetching);
        executor.RunDue();
        EXPECT_EQ(one.node->GetFetchChildrenState(), State::Fetched);
        EXPECT_THAT(one.node->GetChildNodes(), SizeIs(before.size()));
        EXPECT_NE(one.node->GetChildNodes(), before);
    }
    Post<QuilloDatastore::AssetListChanged>(shots->GetID());
    Post<QuilloDatastore::ProjectListChanged>(project->GetID());
    EXPECT_EQ(shots->GetFetchChildrenState(), State::NotFetched) << "it has never been fetched";
    EXPECT_EQ(project->GetFetchChildrenState(), State::NotFetched);
    auto const fresh = CurrentUser();
    Post<QuilloDatastore::AccountListChanged>();
    EXPECT_EQ(fresh->GetFetchChildrenState(), State::NotFetched);
}

TEST_F(ClientBackendTest, AChangeInTheServiceShowsInTheTree) {
    auto const user = FetchedUser();
    executor.RunUntil([&] { return !Requests("GET /v1/events").empty(); });
    auto const stream = IndicesOf("GET /v1/events").back();
    transport.SendBody(stream, "id: 1\nevent: ready\ndata: {}\n\n");
    executor.RunDue();
    On("GET /v1/accounts/" + Id(2) + "/workspaces",
       R"({"workspaces":[)" + Record(4, "Renamed") + "]}");
    transport.SendBody(stream, "id: 2\nevent: changed\ndata: {\"list\":\"workspaces\",\"of\":\"" +
                                   Id(2) + "\"}\n\n");
    executor.RunDue();
    EXPECT_THAT(Names(user->GetAccounts().at(0)->GetChildNodes()), ElementsAre("Renamed"));
}

TEST_F(ClientBackendTest, TheUserIsAskedForOnceAndDeliveredAlsoAfterASignOut) {
    auto const first = CurrentUser();
    auto const second = CurrentUser();
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->GetID(), second->GetID());
    // The session is one: it ends whichever backend is told to end it.
    for (auto const signOut : {&Client::SignOut, &model::QuilloCppSdkIntegration::SignOut}) {
        signOut();
        first->FetchChildren();
        executor.RunDue();
        EXPECT_EQ(first->GetFetchChildrenState(), State::Fetching) << "nobody is signed in";

        auto const third = FetchedUser();
        EXPECT_EQ(third->GetID(), first->GetID());
        EXPECT_EQ(third->GetFetchChildrenState(), State::Fetched) << "it has signed in again";
    }
    EXPECT_EQ(Requests("GET /v1/me").size(), 1u);
}

TEST_F(ClientBackendTest, AUserWhoCouldNotBeHadIsAskedForAgainTheNextTime) {
    On("GET /v1/me", "", 403);
    EXPECT_FALSE(CurrentUser());
    ServeTree();
    EXPECT_TRUE(CurrentUser());
}

TEST_F(ClientBackendTest, SigningInAgainOpensTheBrowserAnewInPlaceOfThePageThatWasLost) {
    testsupport::FakeBrowser browser;
    On("POST /oauth/token", R"({"error":"unauthorized_client"})", 400);
    std::shared_ptr<QuilloUser> user;
    auto const signIn = [&] {
        Client::GetCurrentUser(
            [&](std::shared_ptr<QuilloUser> const& received) { user = received; });
        executor.RunDue();
        return browser.NextPage();
    };
    auto const lost = signIn();
    auto const page = signIn();
    GrantTokens();
    EXPECT_THAT(testsupport::FakeBrowser::Visit(lost.ReturnAddress("c0de")),
                testing::Not(testing::HasSubstr("Thank you")));
    EXPECT_THAT(testsupport::FakeBrowser::Visit(page.ReturnAddress("c0de")),
                testing::HasSubstr("Thank you"));
    executor.RunUntil([&] { return user != nullptr; });
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(ClientBackendTest, AListThatFailsLeavesTheNodeFetching) {
    On("GET /v1/accounts", "", 403);
    auto const user = CurrentUser();
    user->FetchChildren();
    executor.RunDue();
    EXPECT_EQ(user->GetFetchChildrenState(), State::Fetching);
    EXPECT_THAT(user->GetAccounts(), IsEmpty());
    ServeTree();
    user->FetchChildren();
    executor.RunDue();
    EXPECT_EQ(user->GetFetchChildrenState(), State::Fetched);
}

TEST_F(ClientBackendTest, ANodeThatIsGoneHearsNoAnswer) {
    auto user = FetchedUser();
    std::weak_ptr<QuilloNode> const root = RootFolderOf(user);
    root.lock()->FetchChildren();
    executor.RunDue();
    user.reset();
    testsupport::DrainMainThread();  // what is still to be delivered holds nodes
    EXPECT_TRUE(root.expired());
    transport.Answer(IndicesOf("GET /v1/folders/" + Id(6) + "/children").at(0), 200,
                     R"({"assets":[]})");
    executor.RunDue();
    Client::QuilloClientFolder onTheStack(Guid(Id(6)), nullptr);
    EXPECT_THROW(onTheStack.FetchChildren(), std::bad_weak_ptr);
}

// What the sanitizers watch: the node's last owner lets go of it while messages come on another
// thread, whose calls may thus be the last to hold it.
TEST_F(ClientBackendTest, NodesGoWhileMessagesCome) {
    constexpr int kRounds = 200;
    constexpr int kBurst = 20;
    CurrentUser();
    On("GET /v1/folders/" + Id(6) + "/children",
       R"({"assets":[)" + Record(11, "Shots", R"(,"type":"folder")") + "]}");
    Guid const id(Id(6));
    std::atomic<int> wanted = 0;
    std::atomic<int> posted = 0;
    std::jthread const poster([&] {
        for (; posted < kRounds * kBurst; ++posted) {
            while (posted >= wanted)
                std::this_thread::yield();
            Post<QuilloDatastore::AssetListChanged>(id);
        }
    });
    int heard = 0;
    for (int round = 0; round < kRounds; ++round) {
        std::shared_ptr<QuilloFolder> folder =
            model::MakeClientNode<Client::QuilloClientFolder>(id, nullptr);
        folder->FetchChildren();
        executor.RunUntil([&] { return !folder->GetFolders().empty(); });
        wanted = (round + 1) * kBurst;
        while (posted == round * kBurst)
            std::this_thread::yield();
        if (folder->GetFetchChildrenState() == State::Fetching) ++heard;
        folder.reset();
        while (posted < wanted)
            std::this_thread::yield();
        executor.RunDue();
        testsupport::DrainMainThread();
    }
    EXPECT_EQ(heard, kRounds);
}

}  // namespace
}  // namespace quillomoxui
