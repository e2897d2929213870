#include "quillomoxui/viewmodel/DiagnosticTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/TraceLog.h"

namespace quillomoxui {
namespace {

using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kNullGuid[] = "00000000-0000-0000-0000-000000000000";

/// Counts how often it is walked over.
struct Watched : QuilloWorkspace {
    using QuilloWorkspace::QuilloWorkspace;
    NodeVector<QuilloNode> GetChildNodes() const override {
        ++visits;
        return {};
    }
    mutable int visits = 0;
};

class TraceTest : public testing::Test {
protected:
    ~TraceTest() override { testsupport::DrainMainThread(); }
    TraceTest() {
        user->SetInitialName(UTF8to16("Jane"));
        account->SetInitialName(UTF8to16("Stu\xC3\xA9"));
        workspace->SetInitialName(UTF8to16(std::string("Promos\0hidden", 13)));
        user->SetAccounts({account});
        account->SetWorkspaces({workspace});
        viewModel->SetUser(user);
    }

    std::shared_ptr<ShareForReviewViewModel> viewModel =
        std::make_shared<ShareForReviewViewModel>();
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account = std::make_shared<QuilloAccount>(user);
    std::shared_ptr<Watched> workspace = std::make_shared<Watched>(account);
};

TEST_F(TraceTest, WritesTheStateAndTheTree) {
    testsupport::TraceLog log(5);
    viewModel->SetCurrentViewID(ShareForReviewViewID::UploadInProgress);
    viewModel->SetReviewLinkURL(UTF8to16("http://x/r/1"));
    viewModel->Debug_TraceToConsole();
    auto const line = [](std::string const& start) { return start + "  " + kNullGuid + "\n"; };
    EXPECT_THAT(log.Take(),
                ElementsAre("ShareForReviewViewModel\n"
                            "CurrentViewID :  (unknown ShareForReviewViewID value)\n"
                            "ReviewLinkURL :  http://x/r/1\n" +
                                line("User :  \"Jane\"") + line("    Acct :  \"Stu\xC3\xA9\"") +
                                line("        Wksp :  \"Promos\"") + "\n\n",
                            "ShareForReviewViewModel nodes count = 3\n"));
}

TEST_F(TraceTest, SwitchedOffItIsSilentAndWalksTheTreeAllTheSame) {
    testsupport::TraceLog log(4);
    workspace->visits = 0;
    viewModel->Debug_TraceToConsole();
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_EQ(workspace->visits, 2);  // for the text and for the count
    moxcore::debug::SetTraceLevel("QuilloNative", 5);
    viewModel->Debug_TraceToConsole();
    EXPECT_EQ(log.Take().size(), 2u);
}

TEST(ViewIDText, NamesTheViewsThatHaveAName) {
    std::pair<unsigned, char const*> const cases[] = {
        {0, "None"},          {1, "DebugView"},       {2, "Initial"},
        {3, "SelectProject"}, {4, "SelectFolder"},    {5, "ReviewInQuillo"},
        {6, "SigninPrompt"},  {7, "CopyLinkSection"}, {9, "EncodingProgress"}};
    for (auto const& [id, text] : cases)
        EXPECT_EQ(UTF16to8(ShareForReviewViewIDAsString(static_cast<ShareForReviewViewID>(id))),
                  text);
    for (unsigned const id : {8u, 10u, 11u, ~0u})
        EXPECT_EQ(UTF16to8(ShareForReviewViewIDAsString(static_cast<ShareForReviewViewID>(id))),
                  "(unknown ShareForReviewViewID value)");
}

}  // namespace
}  // namespace quillomoxui
