#include <gmock/gmock.h>

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
    auto const uploaded = host.data[assetdata::kUploadedAssetGuid];
    EXPECT_FALSE(Guid(uploaded).IsNull());
    EXPECT_THAT(Bodies(kAddToLink), ElementsAre(R"({"asset_ids":[")" + uploaded + "\"]}"));

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
    EXPECT_FALSE(Guid(host.processingIDs.at(0)).IsNull());
    EXPECT_NE(host.processingIDs.at(0), host.processingIDs.at(1));
}

TEST_F(WorkflowTest, TheProgressBeginsAnewWithTheExportAndWithTheUpload) {
    std::vector<double> seen;
    auto const binding = viewModel->EncodingProgressNotifyingPropertyHost::BindValueChanged(
        [&](double progress) { seen.push_back(progress); });
    user->SetSelection(folder);
    viewModel->SetEncodingProgress(0.7);
    viewModel->ProcessAssetForReview();
    executor.RunDue();
    viewModel->SetEncodingProgress(0.9);
    std::ofstream(host.exports.at(0)) << "a movie";
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    testsupport::DrainMainThread();
    ASSERT_GE(seen.size(), 5u);
    seen.resize(5);
    EXPECT_THAT(seen, ElementsAre(0.0, 0.7, 0.0, 0.9, 0.0));
    executor.AdvanceBy(std::chrono::hours(1));
    testsupport::DrainMainThread();
}

TEST_F(WorkflowTest, OnlyALinkWithItsGuidAndItsAddressIsUsedAgain) {
    std::pair<char const*, char const*> const stored[] = {
        {kLink, ""}, {"", kUrl}, {"00000000-0000-0000-0000-000000000000", kUrl}};
    for (auto const& [id, url] : stored) {
        host.data = {{assetdata::kReviewLinkGuid, id}, {assetdata::kReviewLinkURL, url}};
        auto const before = Requests(kCreateLink).size();
        Share();
        EXPECT_EQ(Requests(kCreateLink).size(), before + 1) << id << " " << url;
    }
}

TEST_F(WorkflowTest, TheLinkIsNamedAfterTheOutputFile) {
    viewModel->SetActiveAssetName(UTF8to16("A/B: \"\xC3\xA9\""));
    Share();
    EXPECT_THAT(Bodies(kCreateLink), ElementsAre("{\"name\":\"A-B- -\xC3\xA9-.mp4\"}"));
}

TEST_F(WorkflowTest, ANameThatIsTooLongForAFileIsCutAndItsMovieShared) {
    std::string name;
    for (int i = 0; i < 150; ++i)
        name += "🎬";
    viewModel->SetActiveAssetName(UTF8to16(name));
    Share();
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::UploadComplete);
    auto const exported = std::filesystem::path(host.exports.back()).filename().string();
    EXPECT_EQ(exported, name.substr(0, 248) + ".mp4");
}

TEST_F(WorkflowTest, WhatCannotBeNotedIsReportedAndSharedAllTheSame) {
    std::ofstream(std::filesystem::path(directory.Path()) / "state") << "no directory";
    Share();
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
    EXPECT_EQ(Requests(kAddToLink).size(), 1u);
    EXPECT_THAT(failures.All().front().message, testing::HasSubstr("cannot be noted"));
}

TEST_F(WorkflowTest, AShareIsCancelledAtAnyStepAndSharedAgain) {
    struct {
        char const* step;
        std::function<void()> reach;
    } const cases[] = {
        {"link",
         [&] {
             Ignore(kCreateLink);
             viewModel->ProcessAssetForReview();
         }},
        {"queued", [&] { viewModel->ProcessAssetForReview(); }},
        {"export",
         [&] {
             viewModel->ProcessAssetForReview();
             viewModel->SetEncodingStatus({EncodingStatus::Encoding});
         }},
        {"upload",
         [&] {
             viewModel->ProcessAssetForReview();
             std::ofstream(host.exports.back()) << "a movie";
             viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
         }},
    };
    for (auto const& one : cases) {
        SCOPED_TRACE(one.step);
        AllowLinks();
        host.ActivateAnother();
        user->SetSelection(folder);
        viewModel->StartShareForReviewPopup();
        auto const links = Requests(kCreateLink).size();
        auto const uploads = tus.uploads.size();
        auto const failed = failures.All().size();
        one.reach();
        viewModel->CancelShare();
        EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::None);
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::ReviewInQuillo);
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});  // the host is late
        executor.AdvanceBy(std::chrono::hours(1));
        EXPECT_EQ(host.data.count(assetdata::kUploadedAssetGuid), 0u);
        EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::None);
        EXPECT_EQ(failures.All().size(), failed);

        if (!IndicesOf(kCreateLink).empty() && host.data.count(assetdata::kReviewLinkURL) == 0) {
            viewModel->ProcessAssetForReview();  // while the link is still on its way
            transport.Answer(IndicesOf(kCreateLink).back(), 201,
                             std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" +
                                 kUrl + R"("}})");
        }
        Share();
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
        EXPECT_EQ(Requests(kCreateLink).size(), links + 1);
        EXPECT_LE(tus.uploads.size(), uploads + 2);
        viewModel->CancelShare();  // has ended
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
    }
}

TEST_F(WorkflowTest, AnExportThatIsReportedLateOrTwiceIsUploadedOnceAtMost) {
    user->SetSelection(folder);
    viewModel->ProcessAssetForReview();
    std::ofstream(host.exports.back()) << "a movie";
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    executor.AdvanceBy(std::chrono::hours(1));
    EXPECT_EQ(Requests("POST /v1/uploads").size(), 1u);

    // Its export ends while the next share waits for its link.
    host.ActivateAnother();
    viewModel->ProcessAssetForReview();
    std::ofstream(host.exports.back()) << "overtaken";
    viewModel->SetEncodingStatus({EncodingStatus::Encoding});
    Ignore(kCreateLink);
    host.ActivateAnother();
    viewModel->ProcessAssetForReview();
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::None);
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    executor.AdvanceBy(std::chrono::seconds(1));
    EXPECT_EQ(Requests("POST /v1/uploads").size(), 1u);
    EXPECT_TRUE(IsExportKept());
}

TEST_F(WorkflowTest, AnUploadThatIsCancelledTooLateGoesOnItsLinkWithTheNextShare) {
    tus.onRequest = [this](quillosdk::HttpRequest const& request) {
        if (request.url.ends_with("/asset")) viewModel->CancelShare();
    };
    Share();
    EXPECT_TRUE(Requests(kAddToLink).empty());
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::None);
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::ReviewInQuillo);
    tus.onRequest = nullptr;
    Share();
    EXPECT_EQ(Requests(kAddToLink).size(), 1u);
    EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
}

TEST_F(WorkflowTest, AnOlderStackUnderANewLinkIsNewBeyondTheProcess) {
    Share();
    host.data[assetdata::kReviewLinkURL] = "";
    viewModel->ProcessAssetForReview();
    viewModel = std::make_shared<ShareForReviewViewModel>();
    host.Connect(*viewModel);
    viewModel->SetUser(user);
    Share();
    EXPECT_EQ(Requests(kCreateLink).size(), 2u);
    EXPECT_EQ(Requests(kAddToLink).size(), 2u);
}

TEST_F(WorkflowTest, AMovieIsNotUploadedInTheNameOfTheNextUser) {
    user->SetSelection(folder);
    viewModel->ProcessAssetForReview();
    std::ofstream(host.exports.back()) << "a movie";
    auto const other = std::make_shared<QuilloUser>();
    other->SetInitialID(Guid::CreateUnique());
    viewModel->SetUser(other);
    viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    executor.AdvanceBy(std::chrono::hours(1));
    EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::UploadFailed);
    EXPECT_TRUE(tus.uploads.empty());
    EXPECT_TRUE(IsExportKept());
}

TEST_F(WorkflowTest, TheVersionStackThatIsFoundIsUsedAsItReads) {
    for (char const* const found : {"aaaaaaaa-0000-0000-0000-00000000000f", "no identifier"}) {
        host.ActivateAnother();
        host.data[assetdata::kVersionStackGuid] = found;
        Share();
        EXPECT_EQ(host.data[assetdata::kVersionStackGuid], found);
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
    }
    EXPECT_EQ(Requests(kAddToLink).size(), 2u) << "neither has been on a link";
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

}  // namespace
}  // namespace quillomoxui
