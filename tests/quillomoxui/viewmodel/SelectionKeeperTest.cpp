#include <gmock/gmock.h>

#include <tuple>

#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/view/Locations.h"
#include "tests/support/DrainMainThread.h"

namespace quillomoxui {
namespace {

using moxcore::string::UTF16to8;
using testsupport::DrainMainThread;

/// A user whose movies go to C, which lies in A, in the project Spring; no picker is shown.
class SelectionKeeperTest : public testing::Test {
protected:
    SelectionKeeperTest() {
        viewModel->SetUser(user);
        ReceiveTree();
    }
    ~SelectionKeeperTest() override { DrainMainThread(); }

    void ReceiveTree() {
        account = MakeNode<QuilloAccount>("Acme", user);
        user->SetAccounts({account});
        auto const project =
            ReceiveProjects(ReceiveWorkspaces(account, {"Promos"}).front(), {"Spring"}).front();
        above = Receive(project->GetRootFolder(), {"A", "B"}).front();
        selected = Receive(above, {"C"}).front();
        user->SetSelection(selected);
        user->SetProposedSelection(selected);
        DrainMainThread();
    }
    [[nodiscard]] std::string Path() const { return UTF16to8(user->GetSelectionPath()); }

    std::shared_ptr<ShareForReviewViewModel> viewModel =
        std::make_shared<ShareForReviewViewModel>();
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account;
    std::shared_ptr<QuilloFolder> above, selected;
};

TEST_F(SelectionKeeperTest, TheSelectionGoesOverToTheNewFolderOrIsLostAndNeverGoesUp) {
    struct Case {
        std::vector<std::string> accounts, workspaces, projects, top, belowTop;
        bool isThere;
    };
    using Names = std::vector<std::string>;
    Names const acme{"Acme"}, promos{"Promos"}, spring{"Spring"}, a{"A"};
    for (auto const& [accounts, workspaces, projects, top, belowTop, isThere] :
         std::vector<Case>{{acme, promos, spring, {"A", "B"}, {"C", "X"}, true},
                           {acme, promos, spring, a, {"X"}, false},
                           {acme, promos, spring, a, {}, false},
                           {acme, promos, spring, {"B"}, {"C"}, false},
                           {acme, promos, spring, {}, {}, false},
                           {acme, promos, {"Summer"}, a, {"C"}, false},
                           {acme, {"Archive"}, spring, a, {"C"}, false},
                           {{"Zeta"}, promos, spring, a, {"C"}, false}}) {
        SCOPED_TRACE(testing::PrintToString(std::tie(accounts, workspaces, projects, top)));
        ReceiveTree();
        auto const newAccount = MakeNode<QuilloAccount>(accounts.front(), user);
        user->SetAccounts({newAccount});
        newAccount->SetFetchChildrenState(FetchChildrenState::Fetching);
        DrainMainThread();
        if (accounts == acme) {
            // What is not known yet, and may never be, is not gone.
            EXPECT_EQ(user->GetSelection(), selected);
            EXPECT_EQ(selected->FindSelfOrAncestorOfType<QuilloAccount>(), account);
        }
        auto const project =
            ReceiveProjects(ReceiveWorkspaces(newAccount, workspaces).front(), projects).front();
        auto const folders = Receive(project->GetRootFolder(), top);
        if (!folders.empty()) Receive(folders.front(), belowTop);
        DrainMainThread();
        EXPECT_EQ(Path(), isThere ? "Promos/Spring/A/C" : "/");
        EXPECT_EQ(UTF16to8(user->GetLostSelectionPath()), isThere ? "" : "Promos/Spring/A/C");
        auto const now = user->GetSelection();
        ASSERT_EQ(now != nullptr, isThere);
        if (!isThere) continue;
        EXPECT_EQ(now->FindSelfOrAncestorOfType<QuilloProject>(), project);
        EXPECT_EQ(user->GetProposedSelection(), now);
    }
    user->SetSelection(selected);
    EXPECT_TRUE(user->GetLostSelectionPath().empty());
}

TEST_F(SelectionKeeperTest, AFolderThatWasGoneBeforeItWasSelectedIsNoSelection) {
    user->SetSelection(above);
    DrainMainThread();
    Receive(above, {"X"});
    user->SetSelection(selected);
    DrainMainThread();
    EXPECT_FALSE(user->GetSelection());
    // What a host has made itself is in no list, and nobody has taken it away.
    auto const own = MakeNode<QuilloFolder>("Own", above);
    user->SetSelection(own);
    DrainMainThread();
    EXPECT_EQ(user->GetSelection(), own);
}

TEST_F(SelectionKeeperTest, WhatIsChosenMeanwhileStays) {
    auto const workspace = ReceiveWorkspaces(account, {"Promos"}).front();
    auto const project = ReceiveProjects(workspace, {"Spring"}).front();
    auto const top = Receive(project->GetRootFolder(), {"A", "B"});
    user->SetSelection(top[1]);
    Receive(top[0], {});
    DrainMainThread();
    EXPECT_EQ(user->GetSelection(), top[1]);
    EXPECT_EQ(user->GetProposedSelection(), selected);
}

}  // namespace
}  // namespace quillomoxui
