#include <gmock/gmock.h>

#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/view/Locations.h"
#include "tests/support/DrainMainThread.h"

namespace quillomoxui {
namespace {

using testsupport::DrainMainThread;

/// A user whose movies go to C, which lies in A, in the project Spring; no picker is shown.
class SelectionKeeperTest : public testing::Test {
protected:
    SelectionKeeperTest() {
        account = MakeNode<QuilloAccount>("Acme", user);
        user->SetAccounts({account});
        viewModel->SetUser(user);
        auto const project =
            ReceiveProjects(ReceiveWorkspaces(account, {"Promos"}).front(), {"Spring"}).front();
        auto const top = Receive(project->GetRootFolder(), {"A", "B"});
        selected = Receive(top[0], {"C"}).front();
        Select(selected);
    }
    ~SelectionKeeperTest() override { DrainMainThread(); }

    void Select(std::shared_ptr<QuilloFolder> const& folder) {
        user->SetSelection(folder);
        user->SetProposedSelection(folder);
        DrainMainThread();
    }
    [[nodiscard]] std::string Path() const {
        return moxcore::string::UTF16to8(user->GetSelectionPath());
    }

    std::shared_ptr<ShareForReviewViewModel> viewModel =
        std::make_shared<ShareForReviewViewModel>();
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account;
    std::shared_ptr<QuilloFolder> selected;
};

TEST_F(SelectionKeeperTest, TheSelectionGoesOverToTheNewTreeOrWhatIsLeftOfItsWay) {
    struct Case {
        std::vector<std::string> projects, top, belowTop;
        std::string path;
    };
    for (auto const& [projects, top, belowTop, path] :
         std::vector<Case>{{{"Spring"}, {"A", "B"}, {"C", "X"}, "Promos/Spring/A/C"},
                           {{"Spring"}, {"A"}, {"X"}, "Promos/Spring/A"},
                           {{"Spring"}, {"A"}, {}, "Promos/Spring/A"},
                           {{"Spring"}, {"B"}, {"C"}, "Promos/Spring"},
                           {{"Summer"}, {"A"}, {"C"}, "/"}}) {
        SCOPED_TRACE(path);
        Select(selected);
        auto const workspace = ReceiveWorkspaces(account, {"Promos"}).front();
        DrainMainThread();
        EXPECT_EQ(user->GetSelection(), selected);
        EXPECT_TRUE(selected->FindSelfOrAncestorOfType<QuilloProject>());

        auto const project = ReceiveProjects(workspace, projects).front();
        auto const folder = Receive(project->GetRootFolder(), top).front();
        Receive(folder, belowTop);
        DrainMainThread();
        EXPECT_EQ(Path(), path);
        EXPECT_EQ(user->GetProposedSelection(), user->GetSelection());
        if (path == "/") {
            EXPECT_FALSE(user->GetSelection());
            continue;
        }
        EXPECT_EQ(user->GetSelection()->FindSelfOrAncestorOfType<QuilloProject>(), project);
        // The next tree has everything again.
        selected = Receive(Receive(project->GetRootFolder(), {"A"}).front(), {"C"}).front();
    }
}

TEST_F(SelectionKeeperTest, WhatIsChosenMeanwhileStays) {
    auto const workspace = ReceiveWorkspaces(account, {"Promos"}).front();
    auto const project = ReceiveProjects(workspace, {"Spring"}).front();
    auto const top = Receive(project->GetRootFolder(), {"A", "B"});
    user->SetSelection(top[1]);
    Receive(top[0], {"C"});
    DrainMainThread();
    EXPECT_EQ(user->GetSelection(), top[1]);
    EXPECT_EQ(user->GetProposedSelection(), selected);
}

}  // namespace
}  // namespace quillomoxui
