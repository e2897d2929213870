#include <gmock/gmock.h>

#include <latch>

#include "moxcore/debug/DebugDatabase.h"
#include "quilloauth/AuthManager.h"
#include "quilloclient/ServiceDatastore.h"
#include "quillomoxui/model/Backends.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "tests/quillomoxui/viewmodel/WorkflowTest.h"

namespace quillomoxui {
namespace {

using View = ShareForReviewViewID;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(WorkflowTest, ThePopupOpensOnTheViewThatTheStateCallsFor) {
    struct {
        std::uint32_t status;
        View view;
    } const cases[] = {{0, View::ReviewInQuillo},   {1, View::WaitingInQueue},
                       {2, View::EncodingProgress}, {4, View::ReviewInQuillo},
                       {6, View::UploadInProgress}, {8, View::ReviewInQuillo}};
    for (auto const& one : cases) {
        viewModel->SetEncodingStatus({one.status});
        viewModel->SetCurrentViewID(View::None);
        viewModel->SetCurrentViewID(View::SelectFolder);
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::None) << one.status;
        viewModel->StartShareForReviewPopup();
        EXPECT_EQ(viewModel->GetCurrentViewID(), one.view) << one.status;
    }
    viewModel->SetUser(std::make_shared<QuilloUser>());
    viewModel->StartShareForReviewPopup();
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::SigninPrompt);

    auto& switches = moxcore::debug::DebugDatabase::Instance();
    std::pair<std::string, View> const debugViews[] = {
        {"UnifiedHeader.ShowQuilloNativeShareButtonEncodingProgressView", View::EncodingProgress},
        {"UnifiedHeader.ShowQuilloNativeShareButtonCopyLinkView", View::CopyLinkSection},
        {"UnifiedHeader.ShowQuilloNativeShareButtonDebugView", View::DebugView},
    };
    for (auto const& [key, view] : debugViews) {  // each goes before those already on
        switches.SetEntry(key, true);
        viewModel->StartShareForReviewPopup();
        EXPECT_EQ(viewModel->GetCurrentViewID(), view);
    }
    for (auto const& entry : debugViews)
        switches.RemoveEntry(entry.first);
}

TEST_F(WorkflowTest, ARepeatedStatusShowsItsViewAgain) {
    viewModel->SetEncodingStatus({EncodingStatus::Queued});
    viewModel->SetCurrentViewID(View::ReviewInQuillo);
    viewModel->SetEncodingStatus({EncodingStatus::Queued});
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::WaitingInQueue);
    EncodingStatusNotifyingPropertyHost& property = *viewModel;
    property.SetEncodingStatus({EncodingStatus::Encoding});
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::EncodingProgress);
}

TEST_F(WorkflowTest, LoginSetsTheUserThatTheServiceNames) {
    On("GET /v1/me", std::string(R"({"user":{"id":")") + kProject + R"(","name":"Jane"}})");
    On("GET /v1/accounts", R"({"accounts":[]})");
    std::promise<void> arrived;
    auto const binding = viewModel->UserNotifyingPropertyHost::BindValueChanged(
        [&](std::shared_ptr<QuilloUser> const& now) {
            if (UTF16to8(now->GetName()) == "Jane") arrived.set_value();
        });
    viewModel->Login();
    moxcore::threads::MainThread::RunUntil([has = arrived.get_future().share()] {
        return has.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    EXPECT_TRUE(viewModel->GetIsLoggedIn());
    ShareForReviewViewModel onTheStack;
    EXPECT_THROW(onTheStack.Login(), std::bad_weak_ptr);
}

/// A sign-in whose answers the test gives, with either backend.
class SignInTest : public WorkflowTest, public testing::WithParamInterface<bool> {
protected:
    SignInTest() {
        moxcore::debug::DebugDatabase::Instance().SetEntry(kSwitch, GetParam());
        quillo::QuilloDatastore::SetDatastore(quillo::ServiceDatastore::Create());
        ServeTree();
        Ignore("GET /v1/me");
        viewModel->Logout();
        viewModel->StartShareForReviewPopup();
    }
    ~SignInTest() override {
        viewModel->Logout();
        executor.RunDue();
        quillo::QuilloDatastore::SetDatastore(nullptr);
        moxcore::debug::DebugDatabase::Instance().RemoveEntry(kSwitch);
    }

    /// Signs in, as far as the question who that is; returns the request's number.
    std::size_t Login() {
        auto const before = Requests("GET /v1/me").size();
        viewModel->Login();
        executor.RunUntil([&] { return Requests("GET /v1/me").size() > before; });
        return IndicesOf("GET /v1/me").back();
    }
    void Answer(std::size_t request, std::string const& name) {
        transport.Answer(request, 200, R"({"user":)" + testsupport::Record(1, name) + "}");
        executor.RunDue();
        testsupport::DrainMainThread();
    }
    [[nodiscard]] std::string UserName() const { return UTF16to8(viewModel->GetUser()->GetName()); }

    static constexpr char kSwitch[] = "QuilloNative.UseQuilloCppSdk";
};
INSTANTIATE_TEST_SUITE_P(Backends, SignInTest, testing::Bool());

TEST_P(SignInTest, TheUserWhoComesAfterTheSignOutStaysOut) {
    auto const late = Login();
    viewModel->SetCurrentViewID(View::SelectFolder);
    viewModel->Logout();
    Answer(late, "Late");
    EXPECT_TRUE(viewModel->GetUser()->GetID().IsNull());
    EXPECT_FALSE(viewModel->GetIsLoggedIn());
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::SelectFolder);

    auto const current = Login();
    EXPECT_EQ(UserName(), "");
    Answer(current, "Jane");
    EXPECT_EQ(UserName(), "Jane");
    EXPECT_TRUE(model::QuilloCppSdkIntegration::GetQuilloClient()) << "for uploads and links";
}

TEST_P(SignInTest, TheLastSignInHasTheLastWord) {
    auto const first = Login();
    if (!GetParam()) {  // the client library asks once
        viewModel->Login();
        Answer(first, "Jane");
        EXPECT_EQ(UserName(), "Jane");
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::ReviewInQuillo);
        return;
    }
    auto const second = Login();
    auto const third = Login();
    Answer(first, "Late");
    EXPECT_EQ(UserName(), "");
    Answer(third, "Jane");
    Answer(second, "Late");
    EXPECT_EQ(UserName(), "Jane");
    EXPECT_TRUE(viewModel->GetIsLoggedIn());
    // A user whom the host sets is the last word as well.
    auto const fourth = Login();
    viewModel->SetUser(user);
    Answer(fourth, "Late");
    EXPECT_EQ(viewModel->GetUser(), user);

    // Nobody is signed in by a sign-in that is overtaken before it has the token.
    viewModel->SetIsLoggedIn(false);
    std::latch goOn{1};
    quilloauth::jwt::GetAccessToken().GetExecutor()->CallAsync([&] { goOn.wait(); });
    viewModel->Login();
    viewModel->SetUser(user);
    goOn.count_down();
    for (int i = 0; i < 2; ++i)
        quilloauth::jwt::GetAccessToken().Wait();
    EXPECT_FALSE(viewModel->GetIsLoggedIn());

    // A sign-in that other code's sign-out ends first reports false.
    std::latch goOnAgain{1};
    quilloauth::jwt::GetAccessToken().GetExecutor()->CallAsync([&] { goOnAgain.wait(); });
    viewModel->Login();
    model::QuilloCppSdkIntegration::SignOut();
    EXPECT_FALSE(viewModel->GetIsLoggedIn());
    goOnAgain.count_down();
    for (int i = 0; i < 2; ++i)
        quilloauth::jwt::GetAccessToken().Wait();
}

TEST_P(SignInTest, ASignInThatIsGivenUpSignsNobodyIn) {
    using quilloauth::SignInStage;
    On("POST /oauth/token", "", 503, {{"RETRY-AFTER", "7"}});
    viewModel->Login();
    executor.RunUntil([&] { return viewModel->GetSignInProgress().stage == SignInStage::Waiting; });
    viewModel->CancelLogin();
    EXPECT_EQ(viewModel->GetSignInProgress().stage, SignInStage::None);
    GrantTokens();
    executor.AdvanceBy(std::chrono::minutes(1));
    // Behind what the sign-in may still do on the thread of tokens.
    for (int i = 0; i < 2; ++i)
        quilloauth::jwt::GetAccessToken().Wait();
    EXPECT_FALSE(model::QuilloCppSdkIntegration::GetQuilloClient());
    EXPECT_THAT(Requests("GET /v1/me"), IsEmpty());
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::SigninPrompt);
}

TEST_F(WorkflowTest, ASignInThatWaitsIsShownAndCanBeGivenUp) {
    using quilloauth::SignInStage;
    auto const stage = [&] { return viewModel->GetSignInProgress().stage; };
    viewModel->Logout();
    On("POST /oauth/token", "", 503, {{"RETRY-AFTER", "7"}});
    viewModel->Login();
    EXPECT_NE(stage(), SignInStage::None) << "at once";
    executor.RunUntil([&] { return stage() == SignInStage::Waiting; });
    viewModel->CancelLogin();
    EXPECT_EQ(stage(), SignInStage::None);
    // What comes of it later signs nobody in.
    GrantTokens();
    executor.AdvanceBy(std::chrono::minutes(1));
    EXPECT_FALSE(viewModel->GetIsLoggedIn());
    EXPECT_EQ(stage(), SignInStage::None);

    On("POST /oauth/token", R"({"error":"invalid_request"})", 400);
    viewModel->Login();
    executor.RunUntil([&] { return stage() == SignInStage::Refused; });

    // Another one's takes the place of a sign-in, which it ends.
    Ignore("POST /oauth/token");
    viewModel->Login();
    auto const another = BeginSignIn();
    EXPECT_EQ(stage(), SignInStage::None);
    model::ChosenBackend().CancelSignIn();
}

TEST_F(WorkflowTest, AnUploadThatWaitsSaysSinceWhen) {
    user->SetSelection(folder);
    viewModel->ProcessAssetForReview();
    std::ofstream(host.exports.back()) << "a movie";
    tus.events = {{"POST", {}, 503, {{"RETRY-AFTER", "60"}}}};
    auto const begun = moxcore::threads::Now();
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    executor.AdvanceBy(std::chrono::seconds(30));
    EXPECT_EQ(viewModel->GetUploadWaitingSince(), begun);
    executor.AdvanceBy(std::chrono::seconds(31));
    EXPECT_EQ(viewModel->GetUploadWaitingSince(), std::nullopt);
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::UploadComplete);
}

TEST_F(WorkflowTest, WithTheClientLibraryLoginMovesTheViewAndSharesAsEver) {
    auto& switches = moxcore::debug::DebugDatabase::Instance();
    switches.SetEntry("QuilloNative.UseQuilloCppSdk", false);
    quillo::QuilloDatastore::SetDatastore(quillo::ServiceDatastore::Create());
    ServeTree();
    viewModel->StartShareForReviewPopup();
    viewModel->Login();
    executor.RunUntil([&] {
        return viewModel->GetUser() != user && !viewModel->GetUser()->GetAccounts().empty();
    });
    user = viewModel->GetUser();
    EXPECT_EQ(UTF16to8(user->GetName()), "Jane");
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::ReviewInQuillo);
    EXPECT_FALSE(viewModel->GetIsLoggedIn());

    project = user->GetAccounts().at(0)->GetWorkspaces().at(1)->GetProjects().at(1);
    folder = project->GetRootFolder();
    On("POST /v1/projects/" + project->GetID().AsStdString() + "/review-links",
       std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" + kUrl + R"("}})", 201);
    user->SetSelection(folder);
    testsupport::DrainMainThread();
    // All lists change, and nobody keeps what there was.
    auto const before = std::exchange(folder, nullptr);
    project.reset();
    user->FetchChildren();
    executor.RunUntil([&] {
        testsupport::DrainMainThread();
        return user->GetSelection() != before;
    });
    folder = user->GetSelection();
    ASSERT_TRUE(folder);
    Share();
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
    EXPECT_EQ(host.data[assetdata::kUploadFolderGuid], before->GetID().AsStdString());

    viewModel->Logout();
    EXPECT_TRUE(viewModel->GetUser()->GetID().IsNull());
    EXPECT_FALSE(model::QuilloCppSdkIntegration::GetQuilloClient());
    user->FetchChildren();
    executor.AdvanceBy(std::chrono::minutes(10));
    EXPECT_EQ(user->GetFetchChildrenState(), FetchChildrenState::Fetching)
        << "the datastore is signed out as well";

    // The user and the view follow the client library, whatever becomes of the SDK's session.
    On("POST /oauth/token", R"({"error":"access_denied"})", 400);
    viewModel->SetCurrentViewID(View::SigninPrompt);
    viewModel->Login();
    executor.RunUntil([&] { return viewModel->GetCurrentViewID() == View::ReviewInQuillo; });
    EXPECT_EQ(UTF16to8(viewModel->GetUser()->GetName()), "Jane");
    EXPECT_FALSE(model::QuilloCppSdkIntegration::GetQuilloClient());
    viewModel->Logout();
    executor.RunDue();
    quillo::QuilloDatastore::SetDatastore(nullptr);
    switches.RemoveEntry("QuilloNative.UseQuilloCppSdk");
}

TEST_F(WorkflowTest, ThePickerOfTheSharePopupStoresTheFolderAndReturns) {
    viewModel->StartShareForReviewPopup();
    viewModel->LocationPickerSelectionCommitted();
    EXPECT_THAT(host.data, IsEmpty());
    user->SetSelection(folder);
    viewModel->SetCurrentViewID(View::SelectFolder);
    viewModel->LocationPickerSelectionCommitted();
    EXPECT_EQ(host.data[assetdata::kUploadFolderGuid], kFolder);
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::ReviewInQuillo);
    viewModel->SetCurrentViewID(View::SelectFolder);
    viewModel->LocationPickerCancelled();
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::ReviewInQuillo);

    // A folder chosen for another asset is no part of the share that waits for its link.
    Ignore(kCreateLink);
    viewModel->ProcessAssetForReview();
    executor.RunUntil([&] { return !Requests(kCreateLink).empty(); });
    host.ActivateAnother();
    viewModel->LocationPickerSelectionCommitted();
    transport.Answer(
        IndicesOf(kCreateLink).back(), 201,
        std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" + kUrl + R"("}})");
    executor.RunDue();
    EXPECT_EQ(host.exports.size(), 1u);
}

TEST_F(WorkflowTest, ThePickerAloneTellsItsCallerOnceAndStoresNothing) {
    project->SetRootFolder(folder);
    workspace->SetInitialName(UTF8to16("Promos"));
    project->SetInitialName(UTF8to16("Spot"));
    struct {
        bool choose;
        std::shared_ptr<QuilloFolder> selection;
        std::string id, path;
    } const cases[] = {
        {true, folder, kFolder, "Promos/Spot"},
        {true, nullptr, Guid().AsStdString(), ""},
        {false, folder, Guid().AsStdString(), ""},
    };
    for (auto const& one : cases) {
        std::vector<std::string> log;
        auto const picker = std::make_shared<ShareForReviewViewModel>();
        host.Connect(*picker);
        std::vector<View> seen;
        auto const binding = picker->CurrentViewIDNotifyingPropertyHost::BindValueChanged(
            [&](View view) { seen.push_back(view); });
        picker->SelectLocationAPI(user, [&](Guid const& id, UTF16String const& path) {
            EXPECT_EQ(picker->GetCurrentViewID(), View::None);
            log.push_back(id.AsStdString() + " " + UTF16to8(path));
        });
        EXPECT_EQ(picker->GetCurrentViewID(), View::SelectProject);
        user->SetSelection(one.selection);
        one.choose ? picker->LocationPickerSelectionCommitted() : picker->LocationPickerCancelled();
        EXPECT_THAT(log, ElementsAre(one.id + " " + one.path));
        testsupport::DrainMainThread();
        EXPECT_THAT(seen, ElementsAre(View::None, View::None));
        picker->LocationPickerSelectionCommitted();  // still alone
        EXPECT_EQ(log.size(), 2u);
        testsupport::DrainMainThread();
    }
    EXPECT_THAT(host.data, IsEmpty());
}

}  // namespace
}  // namespace quillomoxui
