
#include "tests/quillomoxui/viewmodel/WorkflowTest.h"

namespace quillomoxui {
namespace {

using View = ShareForReviewViewID;
using moxcore::string::UTF8to16;

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

// The process ends at each step of a first share; the next one knows but what is on the disk.
TEST_F(WorkflowTest, AShareThatEndedWithItsProcessIsCompletedByTheNextOne) {
    std::vector<std::function<void()>> const steps = {
        [&] {
            Ignore(kCreateLink);
            viewModel->ProcessAssetForReview();
        },
        [&] { viewModel->ProcessAssetForReview(); },
        [&] {
            Ignore(kAddToLink);
            Share();
        },
        [&] { Share(); },
    };
    for (std::size_t step = 0; step < steps.size(); ++step) {
        SCOPED_TRACE(step);
        auto const marks = std::filesystem::path(directory.Path()) / "state/unlinked-stacks";
        auto const restart = [&] {
            viewModel = std::make_shared<ShareForReviewViewModel>();
            host.Connect(*viewModel);
            viewModel->SetUser(user);
            viewModel->SetActiveAssetName(UTF8to16("name"));
            user->SetSelection(folder);
            viewModel->StartShareForReviewPopup();
        };
        host = {};
        restart();
        AllowLinks();
        auto const added = Requests(kAddToLink).size();
        steps[step]();
        bool const isLast = step + 1 == steps.size();
        EXPECT_EQ(std::filesystem::is_empty(marks), isLast);
        restart();
        AllowLinks();
        Share();
        EXPECT_EQ(viewModel->GetCurrentViewID(), View::CopyLinkSection);
        // Once, and once more where the first request has got no answer.
        EXPECT_EQ(Requests(kAddToLink).size(), added + (step == 2 ? 2 : 1));
        EXPECT_FALSE(IsExportKept());
        EXPECT_TRUE(std::filesystem::is_empty(marks));
    }
}

}  // namespace
}  // namespace quillomoxui
