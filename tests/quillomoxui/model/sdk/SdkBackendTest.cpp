#include <gmock/gmock.h>

#include <future>
#include <latch>
#include <memory>
#include <string>
#include <vector>

#include "quilloauth/AuthManager.h"
#include "quillomoxui/model/sdk/SdkNodes.h"
#include "tests/quillomoxui/SignedIn.h"
#include "tests/support/FakeBrowser.h"

namespace quillomoxui {
namespace {

using Sdk = model::QuilloCppSdkIntegration;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testsupport::Id;
using testsupport::Record;

class BackendTest : public ServiceTest {
protected:
    BackendTest() { ServeTree(); }

    /// The root that the service's answer makes; null when it makes none.
    std::shared_ptr<QuilloUser> CurrentUser() {
        std::shared_ptr<QuilloUser> user;
        Sdk::GetCurrentUser([&](std::shared_ptr<QuilloUser> const& received) { user = received; });
        executor.AdvanceBy(std::chrono::minutes(10));
        return user;
    }
};

TEST_F(BackendTest, TheTreeFillsItselfDownToTheRootFolders) {
    ASSERT_TRUE(SignIn());
    auto const user = CurrentUser();
    ASSERT_TRUE(user);
    EXPECT_EQ(user->GetID().AsStdString(), Id(1));
    user->FetchChildren();
    executor.RunDue();

    auto const account = user->GetAccounts().at(0);
    EXPECT_EQ(account->GetFetchChildrenState(), FetchChildrenState::Fetched);
    EXPECT_THAT(Names(account->GetChildNodes()), ElementsAre("Archive", "promos"));
    auto const empty = account->GetWorkspaces().at(0);
    EXPECT_EQ(empty->GetFetchChildrenState(), FetchChildrenState::Fetched);
    EXPECT_THAT(empty->GetProjects(), IsEmpty());
    auto const full = account->GetWorkspaces().at(1);
    EXPECT_THAT(Names(full->GetChildNodes()), ElementsAre("spot 9", "Spot 10"));
    auto const project = full->GetProjects().at(1);
    EXPECT_EQ(project->GetFetchChildrenState(), FetchChildrenState::Fetching);
    EXPECT_EQ(project->GetRootFolder()->GetID().AsStdString(), Id(6));
    EXPECT_EQ(project->GetRootFolder()->GetParent(), project);
    EXPECT_EQ(project->GetRootFolder()->GetFetchChildrenState(), FetchChildrenState::NotFetched);
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(BackendTest, SigningInAgainOpensTheBrowserAnewInPlaceOfThePageThatWasLost) {
    testsupport::FakeBrowser browser;
    On("POST /oauth/token", R"({"error":"unauthorized_client"})", 400);
    static_cast<void>(BeginSignIn());
    auto const lost = browser.NextPage();
    auto signedIn = BeginSignIn();
    auto const page = browser.NextPage();
    GrantTokens();
    EXPECT_THAT(testsupport::FakeBrowser::Visit(lost.ReturnAddress("c0de")),
                Not(HasSubstr("Thank you")));
    EXPECT_THAT(testsupport::FakeBrowser::Visit(page.ReturnAddress("c0de")),
                HasSubstr("Thank you"));
    EXPECT_TRUE(signedIn.get());
    EXPECT_TRUE(CurrentUser());
    EXPECT_TRUE(failures.All().empty());
}

TEST_F(BackendTest, AFolderTakesTheTypesItKnowsAndReplacesItsChildrenAtEachAnswer) {
    ASSERT_TRUE(SignIn());
    auto const folder = std::make_shared<Sdk::QuilloSdkFolder>(
        quillosdk::Asset{quillocommon::Guid(Id(6)), "root", "folder"}, nullptr);
    auto const line = "GET /v1/folders/" + Id(6) + "/children";
    On(line, R"({"assets":[)" + Record(10, "b.mov", R"(,"type":"file")") + "," +
                 Record(11, "Shots", R"(,"type":"folder")") + "," +
                 Record(12, "A.mov", R"(,"type":"file")") + "," +
                 Record(13, "Cut", R"(,"type":"version_stack")") + "," +
                 Record(14, "Not a folder", R"(,"type":"Folder")") + "," +
                 Record(15, "Unheard of", R"(,"type":"hologram")") + "]}");
    folder->FetchChildren();
    executor.RunDue();
    EXPECT_THAT(Names(folder->GetChildNodes()), ElementsAre("A.mov", "b.mov", "Cut", "Shots"));
    auto const first = folder->GetFolders().at(0);
    EXPECT_EQ(first->GetParent(), folder);

    folder->FetchChildren();
    EXPECT_EQ(folder->GetFetchChildrenState(), FetchChildrenState::Fetching);
    executor.RunDue();
    EXPECT_NE(folder->GetFolders().at(0), first);
    EXPECT_EQ(folder->GetFetchChildrenState(), FetchChildrenState::Fetched);
}

TEST_F(BackendTest, ATreeThatHasNoEndIsCutOffAndReported) {
    ServeEndlessTree();
    ASSERT_TRUE(SignIn());
    auto const user = CurrentUser();
    ASSERT_TRUE(user);
    user->FetchChildren();
    executor.RunDue();
    auto const workspace = user->GetAccounts().at(0)->GetWorkspaces().at(1);
    ExpectAnEndTo(workspace->GetProjects().at(1)->GetRootFolder());
}

TEST_F(BackendTest, TheCurrentUserIsAskedForAtEachCallAndNotMadeUp) {
    EXPECT_FALSE(CurrentUser());  // nobody is signed in
    EXPECT_THAT(Requests("GET"), IsEmpty());
    ASSERT_TRUE(SignIn());
    auto const one = CurrentUser();
    auto const two = CurrentUser();
    EXPECT_NE(one, two);
    EXPECT_EQ(Requests("GET /v1/me").size(), 2u);
    for (auto const& [status, body] :
         {std::pair(403, "{}"), std::pair(500, ""), std::pair(200, R"({"user":{"name":"Jane"}})"),
          std::pair(200, R"({"user":)")}) {
        On("GET /v1/me", body, status);
        EXPECT_FALSE(CurrentUser()) << status << " " << body;
    }
    EXPECT_EQ(failures.All().size(), 4u);
}

TEST_F(BackendTest, AnAccountListThatFailsLeavesTheUserFetching) {
    ASSERT_TRUE(SignIn());
    auto const user = CurrentUser();
    On("GET /v1/accounts", "", 403);
    user->FetchChildren();
    executor.AdvanceBy(std::chrono::minutes(10));
    EXPECT_EQ(user->GetFetchChildrenState(), FetchChildrenState::Fetching);
    EXPECT_THAT(user->GetAccounts(), IsEmpty());
}

TEST_F(BackendTest, AnEmptyIdentityChangesNothing) {
    auto const none = UTF16String();
    auto const other = moxcore::string::AsciiToUTF16("other");
    InitQuilloCppSdk(none, other);
    InitQuilloCppSdk(other, none);
    ASSERT_TRUE(SignIn());
    auto const& request = transport.At(0);
    EXPECT_EQ(transport.LineAt(0), "POST /oauth/token");
    EXPECT_NE(request.body->find("client_id=editor"), std::string::npos) << *request.body;
}

TEST_F(BackendTest, OnlyTheNewestCallbackHearsOfTheSignOut) {
    Sdk::SignOut();  // before any sign-in: nobody to tell
    // The callbacks outlive the test: the fixture signs out at the end.
    auto const bothSignedIn =
        std::make_shared<std::latch>(2);  // whichever callback each of them finds
    auto const log = std::make_shared<std::vector<std::string>>();
    Sdk::SignIn([=](bool loggedIn) {
        if (loggedIn) return bothSignedIn->count_down();
        log->push_back("the first");
    });
    Sdk::SignIn([=](bool loggedIn) {
        if (loggedIn) return bothSignedIn->count_down();
        log->push_back(Sdk::GetQuilloClient() ? "the second" : "too late for its client");
    });
    bothSignedIn->wait();
    EXPECT_TRUE(Sdk::GetQuilloClient());
    Sdk::SignOut();
    EXPECT_THAT(*log, ElementsAre("the second"));
    EXPECT_FALSE(Sdk::GetQuilloClient());
}

TEST_F(BackendTest, ASignOutThatTheServiceRefusesNeedsNoCallback) {
    On("POST /oauth/revoke", "", 500);
    Sdk::SignIn({});
    executor.RunUntil([] { return Sdk::GetQuilloClient() != nullptr; });
    Sdk::SignOut();
    EXPECT_FALSE(Sdk::GetQuilloClient());
}

TEST_F(BackendTest, ARejectedTokenIsRenewedAndTheRequestRepeatedWithTheNewOne) {
    ASSERT_TRUE(SignIn());
    std::promise<void> arrived;
    Ignore("GET /v1/me");
    Sdk::GetCurrentUser([&](auto const&) { arrived.set_value(); });
    executor.RunUntil([&] { return !Requests("GET /v1/me").empty(); });
    On("GET /v1/me", R"({"user":)" + Record(1, "Jane") + "}");
    On("POST /oauth/token",
       R"({"access_token":"an0ther-of-the-test","token_type":"Bearer","expires_in":999999,)"
       R"("refresh_token":"r3fresh-of-the-test"})");
    transport.Answer(IndicesOf("GET /v1/me").back(), 401, "");
    executor.RunUntil([has = arrived.get_future().share()] {
        return has.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    EXPECT_THAT(*transport.At(IndicesOf("GET /v1/me").back()).commonHeaders,
                testing::Contains(testing::Pair("Authorization", "Bearer an0ther-of-the-test")));
}

/// An observer of the state finds the children set.
TEST_F(BackendTest, AnAnswerSetsTheChildrenBeforeTheState) {
    ASSERT_TRUE(SignIn());
    std::vector<std::string> log;
    std::vector<std::shared_ptr<BindingHandle>> bindings;
    auto const watch = [&]<class Node>(std::shared_ptr<Node> const& node, auto... lists) {
        auto const note = [&](auto& property, std::string const& name) {
            bindings.push_back(
                property.BindValueChanged([&log, name](auto const&) { log.push_back(name); }));
        };
        (note(static_cast<typename decltype(lists.second)::type&>(*node), lists.first), ...);
        note(static_cast<FetchChildrenStateNotifyingPropertyHost&>(*node), "state");
        testsupport::DrainMainThread();
        log.clear();
        node->FetchChildren();
        executor.RunDue();
        testsupport::DrainMainThread();
        return std::exchange(log, {});
    };
    auto const user = CurrentUser();
    EXPECT_THAT(
        watch(user, std::pair("accounts", std::type_identity<AccountsNotifyingPropertyHost>())),
        ElementsAre("state", "accounts", "state"));
    EXPECT_THAT(
        watch(user->GetAccounts().at(0),
              std::pair("workspaces", std::type_identity<WorkspacesNotifyingPropertyHost>())),
        ElementsAre("state", "workspaces", "state"));
    EXPECT_THAT(watch(user->GetAccounts().at(0)->GetWorkspaces().at(1),
                      std::pair("projects", std::type_identity<ProjectsNotifyingPropertyHost>())),
                ElementsAre("state", "projects", "state"));
    On("GET /v1/folders/" + Id(6) + "/children",
       R"({"assets":[)" + Record(10, "b.mov", R"(,"type":"file")") + "," +
           Record(11, "Shots", R"(,"type":"folder")") + "," +
           Record(13, "Cut", R"(,"type":"version_stack")") + "]}");
    auto const folder = std::make_shared<Sdk::QuilloSdkFolder>(
        quillosdk::Asset{quillocommon::Guid(Id(6)), "root", "folder"}, nullptr);
    EXPECT_THAT(
        watch(folder, std::pair("stacks", std::type_identity<VersionStacksNotifyingPropertyHost>()),
              std::pair("files", std::type_identity<FilesNotifyingPropertyHost>()),
              std::pair("folders", std::type_identity<FoldersNotifyingPropertyHost>())),
        ElementsAre("state", "folders", "files", "stacks", "state"));
}

TEST_F(BackendTest, ASignInThatASignOutOvertakesComesToNothing) {
    struct Halt {
        std::latch reached{1}, goOn{1};
    };
    for (bool const hasToken : {false, true}) {
        SCOPED_TRACE(hasToken);
        ASSERT_TRUE(SignIn());
        auto const logins = Requests("POST /oauth/token").size();
        // The sign-in's thread does one thing after the other, and waits at each of these.
        auto const thread = quilloauth::jwt::GetAccessToken().GetExecutor();
        Halt before, after;
        auto const haltAt = [&](Halt& halt) {
            thread->CallAsync([&halt] {
                halt.reached.count_down();
                halt.goOn.wait();
            });
        };
        auto const log = std::make_shared<std::vector<bool>>();
        haltAt(before);
        Sdk::SignIn([=](bool loggedIn) { log->push_back(loggedIn); });
        haltAt(after);
        if (hasToken) {
            before.goOn.count_down();
            after.reached.wait();
            Sdk::SignOut();
        } else {
            Sdk::SignOut();
            before.goOn.count_down();
        }
        after.goOn.count_down();
        for (int i = 0; i < 2; ++i)
            quilloauth::jwt::GetAccessToken().Wait();
        EXPECT_THAT(*log, ElementsAre(false));
        EXPECT_FALSE(Sdk::GetQuilloClient());
        EXPECT_EQ(Requests("POST /oauth/token").size(), logins);
    }
}

TEST_F(BackendTest, ASignInThatIsRefusedCallsNothing) {
    On("POST /oauth/token", R"({"error":"unauthorized_client"})", 400);
    auto const told = std::make_shared<int>(0);
    Sdk::SignIn([=](bool) { ++*told; });
    transport.WaitForCount(1);
    // The sign-in's thread does one thing after the other: once this has failed, the sign-in has
    // ended.
    quilloauth::jwt::GetAccessToken().Wait();
    EXPECT_EQ(Requests("POST /oauth/token").size(), 1u);
    EXPECT_EQ(*told, 0);
    EXPECT_FALSE(Sdk::GetQuilloClient());
}

}  // namespace
}  // namespace quillomoxui
