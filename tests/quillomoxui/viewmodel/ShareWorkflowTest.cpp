#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/debug/DebugDatabase.h"
#include "quilloclient/ServiceDatastore.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/SignedIn.h"

namespace quillomoxui {
namespace {

using View = ShareForReviewViewID;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kProject[] = "aaaaaaaa-0000-0000-0000-000000000001";
constexpr char kFolder[] = "aaaaaaaa-0000-0000-0000-000000000002";
constexpr char kLink[] = "aaaaaaaa-0000-0000-0000-000000000003";
constexpr char kUrl[] = "http://service.test/r/aaaaaaaa-0000-0000-0000-000000000003";
std::string const kCreateLink = std::string("POST /v1/projects/") + kProject + "/review-links";
std::string const kAddToLink = std::string("POST /v1/review-links/") + kLink + "/assets";

/// An editor with one asset, whose strings it keeps and which it exports when told.
struct Host {
    std::map<std::string, std::string> data;
    std::vector<std::string> exports;
    Guid asset{"bbbbbbbb-0000-0000-0000-000000000001"};

    void Connect(ShareForReviewViewModel& viewModel) {
        viewModel.SetAssetDataMethods(
            [this](Guid& first, Guid& second) {
                first = asset;
                second = Guid("bbbbbbbb-0000-0000-0000-000000000002");
                return true;
            },
            [this](Guid const&, Guid const&, UTF16String const& key, UTF16String& value) {
                auto const found = data.find(UTF16to8(key));
                if (found == data.end()) return false;
                value = UTF8to16(found->second);
                return true;
            },
            [this](Guid const&, Guid const&, UTF16String const& key, UTF16String const& value) {
                data[UTF16to8(key)] = UTF16to8(value);
                return true;
            });
        viewModel.SetAssetProcessingMethod([this](UTF16String const& path, UTF16String const&) {
            exports.push_back(UTF16to8(path));
        });
    }
};

class WorkflowTest : public ServiceTest {
protected:
    WorkflowTest() {
        EXPECT_TRUE(SignIn());
        AllowLinks();
        host.Connect(*viewModel);
        viewModel->SetActiveAssetName(UTF8to16("My Sequence"));
        viewModel->SetUser(user);
        user->SetInitialID(Guid::CreateUnique());
        project->SetInitialID(Guid(kProject));
        folder->SetInitialID(Guid(kFolder));
        views = viewModel->CurrentViewIDNotifyingPropertyHost::BindValueChanged(
            [this](View view) { seen.push_back(view); });
    }

    // What is still to be delivered reaches into this object.
    ~WorkflowTest() override { testsupport::DrainMainThread(); }

    void AllowLinks() {
        On(kCreateLink,
           std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" + kUrl + R"("}})",
           201);
        On(kAddToLink, R"({"added":1})");
    }

    /// Presses Share and has the host export; ends where the service does.
    void Share(std::string const& movie = "a movie") {
        user->SetSelection(folder);
        auto const exportsBefore = host.exports.size();
        viewModel->ProcessAssetForReview();
        executor.AdvanceBy(std::chrono::hours(1));
        if (host.exports.size() == exportsBefore) return;
        viewModel->SetEncodingStatus({EncodingStatus::Encoding});
        std::ofstream(host.exports.back(), std::ios::binary) << movie;
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
        executor.AdvanceBy(std::chrono::hours(1));
    }

    [[nodiscard]] bool IsExportKept() const { return std::filesystem::exists(host.exports.back()); }

    /// The views shown since the last call.
    std::vector<View> Seen() {
        testsupport::DrainMainThread();
        return std::exchange(seen, {});
    }

    std::shared_ptr<ShareForReviewViewModel> viewModel =
        std::make_shared<ShareForReviewViewModel>();
    Host host;
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account = std::make_shared<QuilloAccount>(user);
    std::shared_ptr<QuilloWorkspace> workspace = std::make_shared<QuilloWorkspace>(account);
    std::shared_ptr<QuilloProject> project = std::make_shared<QuilloProject>(workspace);
    std::shared_ptr<QuilloFolder> folder = std::make_shared<QuilloFolder>(project);

private:
    std::vector<View> seen;
    std::shared_ptr<BindingHandle> views;
};

TEST_F(WorkflowTest, TheFirstShareMakesTheLinkAndTheSecondUsesIt) {
    viewModel->StartShareForReviewPopup();
    Share("one");
    EXPECT_THAT(Seen(),
                ElementsAre(View::None, View::ReviewInQuillo, View::WaitingInQueue,
                            View::EncodingProgress, View::UploadInProgress, View::CopyLinkSection));
    EXPECT_FALSE(IsExportKept());
    EXPECT_TRUE(host.exports.back().ends_with("/cache/My Sequence.mp4")) << host.exports.back();
    EXPECT_EQ(UTF16to8(viewModel->GetReviewLinkURL()), kUrl);
    EXPECT_EQ(viewModel->GetEncodingProgress(), 1.0);
    EXPECT_EQ(Requests(kCreateLink).size(), 1u);
    EXPECT_EQ(Requests(kAddToLink).size(), 1u);
    EXPECT_EQ(host.data[assetdata::kUploadFolderGuid], kFolder);
    EXPECT_EQ(host.data[assetdata::kReviewLinkGuid], kLink);
    EXPECT_EQ(host.data[assetdata::kReviewLinkURL], kUrl);
    auto const stack = host.data[assetdata::kVersionStackGuid];
    EXPECT_FALSE(Guid(stack).IsNull());
    EXPECT_FALSE(Guid(host.data[assetdata::kUploadedAssetGuid]).IsNull());

    viewModel = std::make_shared<ShareForReviewViewModel>();  // after a restart of the editor
    host.Connect(*viewModel);
    viewModel->SetUser(user);
    viewModel->SetActiveAssetName(UTF8to16("Renamed"));
    Share("two");
    EXPECT_EQ(Requests(kCreateLink).size(), 1u);
    EXPECT_EQ(Requests(kAddToLink).size(), 1u);
    EXPECT_EQ(host.data[assetdata::kVersionStackGuid], stack);
    EXPECT_EQ(UTF16to8(viewModel->GetReviewLinkURL()), kUrl);
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
    EXPECT_EQ(tus.uploads.size(), 2u);
    EXPECT_FALSE(IsExportKept());
}

TEST_F(WorkflowTest, TheLinkIsNamedAfterTheOutputFile) {
    viewModel->SetActiveAssetName(UTF8to16("A/B: \"\xC3\xA9\""));
    Share();
    std::vector<std::string> bodies;
    for (std::size_t i = 0; i < transport.Count(); ++i)
        if (transport.LineAt(i) == kCreateLink) bodies.push_back(*transport.At(i).body);
    EXPECT_THAT(bodies, ElementsAre("{\"name\":\"A-B- -\xC3\xA9-.mp4\"}"));
}

TEST_F(WorkflowTest, ANameThatIsTooLongForAFileIsCutAndItsMovieShared) {
    std::string name;
    for (int i = 0; i < 150; ++i)
        name += "🎬";
    viewModel->SetActiveAssetName(UTF8to16(name));
    Share();
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::UploadComplete);
    auto const exported = std::filesystem::path(host.exports.back()).filename().string();
    EXPECT_EQ(exported, name.substr(0, 236) + ".mp4");
}

// Each step of a first share fails once; sharing again must put the movie on the link.
TEST_F(WorkflowTest, AShareThatFailedHalfWayIsCompletedByTheNextOne) {
    struct {
        char const* what;
        std::string request;
        View view;  // where the failed share leaves the popup
        std::uint32_t status;
    } const cases[] = {
        {"link", kCreateLink, View::ReviewInQuillo, EncodingStatus::None},
        {"upload", "POST /v1/uploads", View::UploadInProgress, EncodingStatus::UploadFailed},
        {"adding", kAddToLink, View::UploadInProgress, EncodingStatus::UploadComplete},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.what);
        viewModel = std::make_shared<ShareForReviewViewModel>();
        host = {};
        host.Connect(*viewModel);
        viewModel->SetUser(user);
        viewModel->SetActiveAssetName(UTF8to16("name"));
        viewModel->StartShareForReviewPopup();
        auto const failuresBefore = failures.All().size();

        On(one.request, R"({"error":{"code":"forbidden","message":"no"}})", 403);
        Share();
        EXPECT_EQ(viewModel->GetCurrentViewID(), one.view);
        EXPECT_EQ(viewModel->GetEncodingStatus().status, one.status);
        EXPECT_EQ(failures.All().size(), failuresBefore + 1);
        EXPECT_TRUE(host.exports.empty() || IsExportKept());

        Ignore(one.request);
        AllowLinks();
        auto const addedBefore = Requests(kAddToLink).size();
        Share();
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
        EXPECT_EQ(Requests(kAddToLink).size(), addedBefore + 1);
        EXPECT_FALSE(IsExportKept());
    }
}

TEST_F(WorkflowTest, AnAnswerThatComesLateLeavesTheNextShareAlone) {
    Ignore(kAddToLink);
    Share("one");
    auto const late = IndicesOf(kAddToLink).front();
    auto const first = host.exports.back();
    AllowLinks();

    host.asset = Guid::CreateUnique();
    host.data.clear();
    viewModel->SetActiveAssetName(UTF8to16("Other"));
    viewModel->ProcessAssetForReview();
    viewModel->SetEncodingStatus({EncodingStatus::Encoding});
    std::ofstream(host.exports.back()) << "two";
    transport.Answer(late, 200, R"({"added":1})");
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_TRUE(IsExportKept());
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::EncodingProgress);

    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    executor.AdvanceBy(std::chrono::hours(1));
    EXPECT_EQ(Requests(kAddToLink).size(), 2u);
    EXPECT_FALSE(IsExportKept());
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
}

TEST_F(WorkflowTest, ALinkWithoutItsURLIsMadeAnewAndGetsTheMovie) {
    Share();
    host.data[assetdata::kReviewLinkURL] = "";
    Share();
    EXPECT_EQ(Requests(kCreateLink).size(), 2u);
    EXPECT_EQ(Requests(kAddToLink).size(), 2u);
}

TEST_F(WorkflowTest, SharingNowhereDoesNothingAndSaysSo) {
    auto const orphan = std::make_shared<QuilloFolder>(nullptr);
    for (auto const& selection : {std::shared_ptr<QuilloFolder>(), orphan}) {
        user->SetSelection(selection);
        viewModel->ProcessAssetForReview();
        EXPECT_THAT(failures.All().back().message, testing::HasSubstr("choose a location"));
    }
    EXPECT_EQ(failures.All().size(), 2U);
    EXPECT_THAT(host.data, IsEmpty());
    EXPECT_THAT(Requests("POST /v1"), IsEmpty());
}

TEST_F(WorkflowTest, SignedOutAShareFailsAtTheStepThatNeedsTheService) {
    Share();
    viewModel->Logout();
    EXPECT_TRUE(viewModel->GetUser()->GetID().IsNull());
    EXPECT_FALSE(viewModel->GetIsLoggedIn());
    viewModel->SetUser(user);
    Share();
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::UploadFailed);
    EXPECT_TRUE(IsExportKept());
    EXPECT_EQ(failures.All().back().step, quillocommon::Step::Upload);
}

TEST_F(WorkflowTest, ClosedAtAnyMomentThePopupReopensWhereTheShareIsAndTheShareGoesOn) {
    struct {
        char const* moment;
        std::function<void()> reach;
        std::uint32_t status;
        View view;
    } const moments[] = {
        {"before", [&] { user->SetSelection(folder); }, EncodingStatus::None, View::ReviewInQuillo},
        {"queued", [&] { viewModel->ProcessAssetForReview(); }, EncodingStatus::Queued,
         View::WaitingInQueue},
        {"exporting", [&] { viewModel->SetEncodingStatus({EncodingStatus::Encoding}); },
         EncodingStatus::Encoding, View::EncodingProgress},
        {"uploading",
         [&] {
             std::ofstream(host.exports.back()) << "movie";
             viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
         },
         EncodingStatus::Uploading, View::UploadInProgress},
        {"failed", [&] { executor.AdvanceBy(std::chrono::hours(1)); }, EncodingStatus::UploadFailed,
         View::ReviewInQuillo},
        {"shared again", [&] { Share(); }, EncodingStatus::UploadComplete, View::CopyLinkSection},
    };
    On("POST /v1/uploads", R"({"error":{"code":"forbidden","message":"no"}})", 403);
    viewModel->StartShareForReviewPopup();
    for (auto const& one : moments) {
        SCOPED_TRACE(one.moment);
        viewModel->SetCurrentViewID(View::None);  // as the popup does when it is dismissed
        Seen();
        one.reach();
        EXPECT_THAT(Seen(), IsEmpty()) << "the popup stays closed";
        EXPECT_EQ(viewModel->GetEncodingStatus().status, one.status);
        viewModel->StartShareForReviewPopup();
        EXPECT_THAT(Seen(), ElementsAre(one.view));
        if (one.status == EncodingStatus::UploadFailed) Ignore("POST /v1/uploads");
    }
    EXPECT_FALSE(IsExportKept());
    EXPECT_EQ(tus.uploads.size(), 1u);
}

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
    quillo::QuilloDatastore::SetDatastore(nullptr);
    switches.RemoveEntry("QuilloNative.UseQuilloCppSdk");
}

TEST_F(WorkflowTest, AViewModelThatIsGoneHearsNothingOfItsShare) {
    user->SetSelection(folder);
    viewModel->ProcessAssetForReview();
    std::ofstream(host.exports.back()) << "movie";
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    viewModel.reset();
    executor.AdvanceBy(std::chrono::hours(1));
    EXPECT_EQ(tus.uploads.size(), 1u);
    EXPECT_TRUE(IsExportKept());
}

TEST_F(WorkflowTest, AMissingHostCallbackIsToldToWhoeverCalls) {
    viewModel = std::make_shared<ShareForReviewViewModel>();
    viewModel->SetUser(user);
    user->SetSelection(folder);
    EXPECT_THROW(viewModel->ProcessAssetForReview(), std::bad_function_call);
    EXPECT_THROW(viewModel->SetUploadedAssetID(Guid()), std::bad_function_call);
    EXPECT_THROW(viewModel->ProcessAssetForReview_Internal(), std::bad_function_call);
    EXPECT_THROW(viewModel->SetUser(nullptr), moxcore::config::ContractViolation);
    EXPECT_EQ(viewModel->GetUser(), user);
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
        picker->SelectLocationAPI(user, [&](Guid const& id, UTF16String const& path) {
            EXPECT_EQ(picker->GetCurrentViewID(), View::None);
            log.push_back(id.AsStdString() + " " + UTF16to8(path));
        });
        EXPECT_EQ(picker->GetCurrentViewID(), View::SelectProject);
        user->SetSelection(one.selection);
        one.choose ? picker->LocationPickerSelectionCommitted() : picker->LocationPickerCancelled();
        EXPECT_THAT(log, ElementsAre(one.id + " " + one.path));
    }
    EXPECT_THAT(host.data, IsEmpty());
}

}  // namespace
}  // namespace quillomoxui
