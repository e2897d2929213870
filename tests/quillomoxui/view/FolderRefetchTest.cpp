
#include "tests/quillomoxui/view/FolderPickerFixture.h"

namespace quillomoxui::view {
namespace {

using moxcore::string::UTF8to16;
using testing::ElementsAre;
using testing::IsEmpty;

/// The lists of a tree in which D is proposed, below A and C, and A is open are fetched again.
class FolderRefetchTest : public FolderPickerFixture {
protected:
    FolderRefetchTest() {
        ReceiveTree();
        ShowFolders(d);
    }
};

TEST_F(FolderRefetchTest, TheProposalGoesOverToTheNewFolderOnceItIsThere) {
    auto const top = Receive(root, {"A", "B"});
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), d);
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A", "..C", "...D*", ".B"));
    EXPECT_EQ(Fetches(top[0]), 1);
    EXPECT_EQ(UTF16to8(user->ConstructSelectionPath(d)), "Promos/Spring/A/C/D");

    auto const newC = Receive(top[0], {"C"}).front();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), d);
    auto const newD = Receive(newC, {"D", "E"}).front();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), newD);
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A", "..C", "...D*", "...E", ".B"));
    EXPECT_EQ(UTF16to8(user->ConstructSelectionPath(newD)), "Promos/Spring/A/C/D");
}

TEST_F(FolderRefetchTest, AProposalThatIsGoneFallsBackToWhatIsLeft) {
    struct Case {
        std::vector<std::string> top, belowA;
        std::string proposed;
        std::vector<std::string> rows;
    };
    for (auto const& [top, belowA, proposed, rows] :
         std::vector<Case>{{{"A", "B"}, {}, "A", {"Assets", ".A*", ".B"}},
                           {{"A", "B"}, {"X"}, "A", {"Assets", ".A*", "..X", ".B"}},
                           {{"B"}, {}, "root of Spring", {"Assets*", ".B"}},
                           {{}, {}, "root of Spring", {"Assets*"}}}) {
        ReceiveTree();
        ShowFolders(d);
        auto const folders = Receive(root, top);
        if (!folders.empty()) Receive(folders.front(), belowA);
        RunEvents();
        EXPECT_EQ(Proposed(), proposed);
        EXPECT_THAT(TreeRows(), testing::ElementsAreArray(rows));
    }
}

TEST_F(FolderRefetchTest, AChoiceMadeMeanwhileStays) {
    auto const top = Receive(root, {"A", "B"});
    RunEvents();
    PressKeys({Qt::Key_Up});
    EXPECT_EQ(user->GetProposedSelection(), c);
    EXPECT_EQ(UTF16to8(user->ConstructSelectionPath(c)), "Promos/Spring/A/C");
    auto const newC = Receive(top[0], {"C"}).front();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), newC);
}

TEST_F(FolderRefetchTest, NewProjectsAndWorkspacesAreFollowed) {
    std::weak_ptr<QuilloProject> const before = spring;
    promos.reset();
    spring.reset();
    auto const workspace = ReceiveWorkspaces(acme, {"Promos"}).front();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), d);
    EXPECT_EQ(UTF16to8(user->ConstructSelectionPath(d)), "Promos/Spring/A/C/D");
    auto const project = ReceiveProjects(workspace, {"Spring"}).front();
    project->SetName(UTF8to16("Spring, cut down"));
    RunEvents();
    EXPECT_EQ(Fetches(project->GetRootFolder()), 1);
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A", "..C", "...D*", ".B"));

    auto const top = Receive(project->GetRootFolder(), {"A", "B"});
    auto const newD = Receive(Receive(top[0], {"C"}).front(), {"D"}).front();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), newD);
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A", "..C", "...D*", ".B"));

    // Nothing of the tree before is kept.
    root.reset();
    c.reset();
    d.reset();
    RunEvents();
    EXPECT_TRUE(before.expired());
}

TEST_F(FolderRefetchTest, AProjectThatIsGoneLeavesTheStepWithNothingToChoose) {
    user->SetSelection(summer->GetRootFolder());
    ReceiveProjects(promos, {"Summer"});
    RunEvents();
    EXPECT_EQ(Proposed(), "none");
    EXPECT_EQ(model->GetCurrentViewID(), ID::SelectFolder);
    EXPECT_THAT(TreeRows(), IsEmpty());
    EXPECT_EQ(HeaderTexts(), "Spring;This project is gone;");
    EXPECT_FALSE(Button("LocationPickerCommit").UI_IsEnabled());
}

TEST_F(FolderRefetchTest, WhatIsGoneIsNotChosenByThePressThatWasOnItsWay) {
    Receive(root, {"B"});
    QTest::mouseClick(&WidgetOf(Button("LocationPickerCommit")), Qt::LeftButton);
    EXPECT_FALSE(user->GetSelection());
    RunEvents();
    EXPECT_EQ(model->GetCurrentViewID(), ID::SelectFolder);
    EXPECT_EQ(Proposed(), "root of Spring");
    Click(Button("LocationPickerCommit"));
    EXPECT_EQ(user->GetSelection(), root);

    // A picker does not begin with it, either.
    user->SetProposedSelection(d);
    Show(ID::SelectProject);
    EXPECT_EQ(user->GetProposedSelection(), root);
}

TEST_F(FolderRefetchTest, APathThatTheUserHasClosedStaysClosed) {
    // What keeps the selection hears of each change before the picker does.
    window.Container().ChildRemoveAll();
    view.reset();
    user->SetSelection(d);
    RunEvents();
    ShowFolders(d);
    auto& tree = Tree();
    auto const close = [&] { tree.collapse(tree.model()->index(0, 0, tree.model()->index(0, 0))); };
    close();
    for (auto const& [top, rows] :
         std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>>{
             {{"A", "B", "X"}, {"Assets", ".A", ".B", ".X"}},
             {{"A", "X"}, {"Assets", ".A", ".X"}}}) {
        auto const folders = Receive(root, top);
        RunEvents();
        auto const newC = Receive(folders.front(), {"C"}).front();
        RunEvents();
        auto const newD = Receive(newC, {"D"}).front();
        RunEvents();
        EXPECT_EQ(user->GetProposedSelection(), newD);
        EXPECT_THAT(TreeRows(), testing::ElementsAreArray(rows));
    }
    // Nor does the proposal open it that goes to what is left of its path.
    auto const folders = Receive(root, {"A", "B"});
    Receive(Receive(folders.front(), {"C"}).front(), {});
    RunEvents();
    EXPECT_EQ(Proposed(), "C");
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A", ".B"));
}

TEST_F(FolderRefetchTest, WhatIsOpenAndWhereItIsScrolledToStay) {
    std::vector<std::string> names{"A"};
    for (int i = 0; i < 200; ++i)
        names.push_back("B" + std::to_string(i));
    Receive(Receive(root, names)[100], {"Inside"});
    ShowFolders(root);
    RunEvents();
    auto const tree = Find<moxui::controls::UI_MultiColumnTree>(*view);
    PressKeys({Qt::Key_End, Qt::Key_Home});
    for (int i = 0; i <= 100; ++i)
        QTest::keyClick(&Tree(), Qt::Key_Down);
    PressKeys({Qt::Key_Right});
    auto const scrolled = tree->GetScrollPosition().y;
    auto const rows = TreeRows();
    ASSERT_EQ(rows.size(), 203U);
    ASSERT_GT(scrolled, 0);

    Receive(root, names);
    RunEvents();
    EXPECT_EQ(TreeRows(), rows);
    names.push_back("C");
    names.erase(names.begin() + 1);
    Receive(root, names);
    RunEvents();
    EXPECT_EQ(TreeRows().size(), 203U);
    EXPECT_EQ(tree->GetScrollPosition().y, scrolled);
    EXPECT_EQ(Tree().selectionModel()->selectedRows().size(), 1);
}

}  // namespace
}  // namespace quillomoxui::view
