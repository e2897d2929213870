#include <gmock/gmock.h>

#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "tests/quillomoxui/viewmodel/WorkflowTest.h"

namespace quillomoxui {
namespace {

using View = ShareForReviewViewID;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;

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

TEST_F(WorkflowTest, ALinkThatComesLateIsKeptWithItsOwnAsset) {
    constexpr char kLateURL[] = "http://service.test/r/late";
    auto const lateLink =
        std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" + kLateURL + R"("}})";
    for (bool const signsOut : {false, true}) {
        AllowLinks();
        user->SetSelection(folder);
        Ignore(kCreateLink);
        host.ActivateAnother();
        auto const before = IndicesOf(kCreateLink).size();
        viewModel->ProcessAssetForReview();
        viewModel->ProcessAssetForReview();
        ASSERT_EQ(IndicesOf(kCreateLink).size(), before + 1) << "pressed twice";
        auto const late = IndicesOf(kCreateLink).back();
        auto const exports = host.exports.size();

        // Another one, and the first one again, which waits for the link that is on its way.
        auto const firstAsset = host.asset;
        host.ActivateAnother();
        viewModel->ProcessAssetForReview();
        host.ActivateAnother();
        host.asset = firstAsset;
        host.data = host.others[firstAsset.AsStdString()];
        viewModel->ProcessAssetForReview();
        ASSERT_EQ(IndicesOf(kCreateLink).size(), before + 2) << "asked for again";

        auto const& first = host.ActivateAnother();
        if (signsOut) {
            auto const other = std::make_shared<QuilloUser>();
            other->SetInitialID(Guid::CreateUnique());
            viewModel->SetUser(other);
        } else {
            AllowLinks();
            viewModel->ProcessAssetForReview();
            ASSERT_EQ(host.exports.size(), exports + 1);
        }
        auto const exportsNow = host.exports.size();
        auto const view = viewModel->GetCurrentViewID();
        transport.Answer(late, 201, lateLink);
        EXPECT_EQ(first.at(assetdata::kReviewLinkURL), kLateURL);
        EXPECT_EQ(host.exports.size(), exportsNow);
        EXPECT_NE(UTF16to8(viewModel->GetReviewLinkURL()), kLateURL);
        EXPECT_EQ(viewModel->GetCurrentViewID(), view);
    }
}

TEST_F(WorkflowTest, AnUploadThatEndsLateIsFinishedForItsOwnAsset) {
    for (bool const fails : {false, true}) {
        SCOPED_TRACE(fails);
        user->SetSelection(folder);
        host.ActivateAnother();
        viewModel->SetActiveAssetName(UTF8to16("One"));
        viewModel->ProcessAssetForReview();
        auto const movie = host.exports.back();
        std::ofstream(movie) << "one";
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
        auto const added = Requests(kAddToLink).size();

        auto const& first = host.ActivateAnother();
        viewModel->ProcessAssetForReview();  // of the same name
        EXPECT_NE(host.exports.back(), movie);
        EXPECT_EQ(std::filesystem::path(host.exports.back()).filename(), "One.mp4");
        std::ofstream(host.exports.back()) << "two";
        viewModel->SetEncodingStatus({EncodingStatus::Encoding});
        if (fails) On("POST /v1/uploads", R"({"error":{"code":"forbidden","message":"no"}})", 403);
        executor.AdvanceBy(std::chrono::hours(1));
        EXPECT_EQ(first.count(assetdata::kUploadedAssetGuid), fails ? 0u : 1u);
        EXPECT_EQ(Requests(kAddToLink).size(), added + (fails ? 0 : 1));
        EXPECT_EQ(std::filesystem::exists(movie), fails);
        EXPECT_EQ(host.data.count(assetdata::kUploadedAssetGuid), 0u);
        EXPECT_EQ(viewModel->GetEncodingStatus().status, EncodingStatus::Encoding);
        EXPECT_EQ(viewModel->GetEncodingProgress(), 0.0);
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::EncodingProgress);
        EXPECT_TRUE(IsExportKept());
        if (fails) continue;
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
        executor.AdvanceBy(std::chrono::hours(1));
        EXPECT_FALSE(
            std::filesystem::exists(std::filesystem::path(host.exports.back()).parent_path()));
    }
}

}  // namespace
}  // namespace quillomoxui
