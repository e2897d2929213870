#include <QScrollBar>

#include "moxui/controls/UI_HotTextButton.h"
#include "tests/quillomoxui/view/PickerTest.h"

namespace quillomoxui::view {
namespace {

using moxcore::string::UTF8to16;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderPickerTest : public PickerTest {
protected:
    FolderPickerTest() : root(spring->GetRootFolder()) {
        model->SetAssetDataMethods([](auto&, auto&) { return true; },
                                   [](auto&&...) { return false; }, [](auto&&...) { return true; });
    }

    static int Fetches(std::shared_ptr<QuilloFolder> const& folder) {
        return std::dynamic_pointer_cast<CountingFolder>(folder)->fetches;
    }
    /// The project Spring with the folders A, which has C, which has D, and B.
    void ReceiveTree() {
        auto const top = Receive(root, {"B", "A"});
        Receive(top[0], {});
        c = Receive(top[1], {"C"}).front();
        d = Receive(c, {"D"}).front();
        Receive(d, {});
    }
    void PressKeys(std::vector<Qt::Key> const& keys) {
        for (auto const key : keys)
            QTest::keyClick(&Tree(), key);
        RunEvents();
    }
    std::string Proposed() {
        auto const folder = user->GetProposedSelection();
        return folder ? UTF16to8(folder->GetName()) : "none";
    }

    std::shared_ptr<QuilloFolder> root;
    std::shared_ptr<QuilloFolder> c, d;
};

TEST_F(FolderPickerTest, CancelAsksForNothing) {
    user->SetSelection(spring->GetRootFolder());
    auto& picker = ShowFolders(summer->GetRootFolder());
    RunEvents();
    picker.Cancel();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), spring->GetRootFolder());
    EXPECT_EQ(spring->GetRootFolder()->GetFetchChildrenState(), FetchChildrenState::NotFetched);
}

TEST_F(FolderPickerTest, FoldersAreFetchedOnceAsTheyArrive) {
    EXPECT_EQ(Fetches(root), 0);
    ShowFolders(root);
    EXPECT_EQ(HeaderTexts(), "Spring;Promos;");
    EXPECT_EQ(Fetches(root), 1);
    EXPECT_THAT(TreeRows(), ElementsAre("Assets*"));

    auto const top = Receive(root, {"B", "A"});
    RunEvents();
    EXPECT_THAT(TreeRows(), ElementsAre("Assets*", ".A", ".B"));
    EXPECT_EQ(Fetches(top[1]), 1);
    auto const below = Receive(top[1], {"C"}).front();
    RunEvents();
    EXPECT_THAT(TreeRows(), ElementsAre("Assets*", ".A", ".B"));
    EXPECT_EQ(Fetches(below), 1);
    model->SetCurrentViewID(ID::SelectProject);
    RunEvents();
    model->SetCurrentViewID(ID::SelectFolder);
    RunEvents();
    for (auto const& folder : {root, top[0], top[1], below})
        EXPECT_EQ(Fetches(folder), 1) << UTF16to8(folder->GetName());
}

TEST_F(FolderPickerTest, ThePathToTheSelectionIsOpen) {
    ReceiveTree();
    struct Case {
        std::shared_ptr<QuilloFolder> proposed, selected;
        std::vector<std::string> rows;
    };
    for (auto const& [proposed, selected, rows] :
         std::vector<Case>{{root, nullptr, {"Assets*", ".A", ".B"}},
                           {c, nullptr, {"Assets", ".A", "..C*", ".B"}},
                           {nullptr, d, {"Assets", ".A", "..C", "...D*", ".B"}},
                           {d, root, {"Assets", ".A", "..C", "...D*", ".B"}}}) {
        user->SetSelection(selected);
        user->SetProposedSelection(proposed);
        Show(ID::SelectFolder);
        EXPECT_THAT(TreeRows(), testing::ElementsAreArray(rows));
        EXPECT_EQ(Button("LocationPickerCommit").UI_IsEnabled(), proposed != nullptr);
        EXPECT_EQ(user->GetSelection(), selected);
    }
}

TEST_F(FolderPickerTest, TheTreeIsWorkedByKeyboard) {
    ReceiveTree();
    ShowFolders(root);
    Find<moxui::controls::UI_MultiColumnTree>(*view)->UI_SetFocus();
    for (auto const& [keys, proposed] : std::vector<std::pair<std::vector<Qt::Key>, std::string>>{
             {{Qt::Key_Down}, "A"},
             {{Qt::Key_Right, Qt::Key_Right}, "C"},
             {{Qt::Key_End}, "B"},
             {{Qt::Key_Home}, "root of Spring"},
             {{Qt::Key_B}, "B"},
             {{Qt::Key_Up, Qt::Key_Left, Qt::Key_Left}, "A"}}) {
        PressKeys(keys);
        EXPECT_EQ(Proposed(), proposed);
    }
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A*", ".B"));
    auto const fetches = Fetches(c);
    PressKeys({Qt::Key_Asterisk});
    EXPECT_THAT(TreeRows(), ElementsAre("Assets", ".A*", "..C", "...D", ".B"));
    EXPECT_EQ(Fetches(c), fetches);

    // Only Choose commits; Enter presses it.
    EXPECT_EQ(user->GetSelection(), nullptr);
    PressKeys({Qt::Key_Return});
    EXPECT_EQ(UTF16to8(user->GetSelectionPath()), "Promos/Spring/A");
    EXPECT_EQ(model->GetCurrentViewID(), ID::ReviewInQuillo);
}

TEST_F(FolderPickerTest, CancelGoesBackToWhatWasCommitted) {
    ReceiveTree();
    user->SetSelection(d);
    ShowFolders(d);
    PressKeys({Qt::Key_Home});
    EXPECT_EQ(user->GetProposedSelection(), root);
    Click(Button("LocationPickerCancel"));
    EXPECT_EQ(user->GetProposedSelection(), d);
    EXPECT_EQ(user->GetSelection(), d);
    EXPECT_EQ(model->GetCurrentViewID(), ID::ReviewInQuillo);
}

TEST_F(FolderPickerTest, TheHeaderLeadsBackByMouseAndByKeyboard) {
    for (bool const byKeyboard : {false, true}) {
        ShowFolders(root);
        auto const header = Find<FolderPickerHeaderView>(*view);
        if (byKeyboard) {
            header->UI_SetFocus();
            Key(Qt::Key_Space);
            EXPECT_EQ(FocusedRow(), &Row("Spring"));
        } else {
            Click(*header);
        }
        EXPECT_EQ(model->GetCurrentViewID(), ID::SelectProject) << byKeyboard;
    }
}

TEST_F(FolderPickerTest, OneViewServesProjectAfterProject) {
    ReceiveTree();
    Receive(summer->GetRootFolder(), {"Z"});
    Show(ID::SelectProject);
    for (auto const& [project, rows] :
         std::vector<std::pair<char const*, std::vector<std::string>>>{
             {"Spring", {"Assets*", ".A", ".B"}},
             {"Summer", {"Assets*", ".Z"}},
             {"Spring", {"Assets*", ".A", ".B"}}}) {
        Click(Row(project));
        EXPECT_EQ(HeaderTexts(), std::string(project) + ";Promos;");
        EXPECT_THAT(TreeRows(), testing::ElementsAreArray(rows));
        Click(*Find<FolderPickerHeaderView>(*view));
    }
}

/// The lists of a tree in which D is proposed, below A and C, and A is open are fetched again.
class RefetchTest : public FolderPickerTest {
protected:
    RefetchTest() {
        ReceiveTree();
        ShowFolders(d);
    }
};

TEST_F(RefetchTest, TheProposalGoesOverToTheNewFolderOnceItIsThere) {
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

TEST_F(RefetchTest, AProposalThatIsGoneFallsBackToWhatIsLeft) {
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

TEST_F(RefetchTest, AChoiceMadeMeanwhileStays) {
    auto const top = Receive(root, {"A", "B"});
    RunEvents();
    PressKeys({Qt::Key_Up});
    EXPECT_EQ(user->GetProposedSelection(), c);
    EXPECT_EQ(UTF16to8(user->ConstructSelectionPath(c)), "Promos/Spring/A/C");
    auto const newC = Receive(top[0], {"C"}).front();
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), newC);
}

TEST_F(RefetchTest, NewProjectsAndWorkspacesAreFollowed) {
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

TEST_F(RefetchTest, AProjectThatIsGoneLeavesTheStepWithNothingToChoose) {
    user->SetSelection(summer->GetRootFolder());
    ReceiveProjects(promos, {"Summer"});
    RunEvents();
    EXPECT_EQ(Proposed(), "none");
    EXPECT_EQ(model->GetCurrentViewID(), ID::SelectFolder);
    EXPECT_THAT(TreeRows(), IsEmpty());
    EXPECT_EQ(HeaderTexts(), "Spring;This project is gone;");
    EXPECT_FALSE(Button("LocationPickerCommit").UI_IsEnabled());
}

TEST_F(RefetchTest, WhatIsGoneIsNotChosenByThePressThatWasOnItsWay) {
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

TEST_F(RefetchTest, APathThatTheUserHasClosedStaysClosed) {
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

TEST_F(RefetchTest, WhatIsOpenAndWhereItIsScrolledToStay) {
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

TEST_F(FolderPickerTest, ThePickersAreThoseOfTheUserThereIs) {
    auto const other = std::make_shared<QuilloUser>();
    auto const account = MakeNode<QuilloAccount>("Other", other);
    other->SetAccounts({account});
    auto const heist =
        ReceiveProjects(ReceiveWorkspaces(account, {"Films"}).front(), {"Heist"}).front();
    other->SetProposedSelection(heist->GetRootFolder());
    Receive(heist->GetRootFolder(), {"Takes"});
    ReceiveTree();
    for (auto const id : {ID::SelectFolder, ID::SelectProject}) {
        model->SetUser(user);
        user->SetProposedSelection(nullptr);
        user->SetSelection(d);
        Show(id);
        if (id == ID::SelectFolder)
            Tree().setFocus();
        else
            Rows().front()->UI_SetFocus();
        model->SetUser(other);
        RunEvents();
        // What comes late for the user before is nobody's business any more.
        user->SetProposedSelection(nullptr);
        ReceiveProjects(promos, {"Late"});
        RunEvents();
        EXPECT_THAT(ProjectNames(), ElementsAre("Heist"));
        EXPECT_EQ(UTF16to8(Find<moxui::controls::UI_Popup>(*view)->GetItemText(0)), "Other");
        EXPECT_THAT(TreeRows(), ElementsAre("Assets*", ".Takes"));
        EXPECT_EQ(Tree().hasFocus(), id == ID::SelectFolder);
        EXPECT_EQ(WidgetOf(Row("Heist")).isVisible(), id == ID::SelectProject);
        EXPECT_TRUE(Button("LocationPickerCommit").UI_IsEnabled());
    }
    Click(Button("LocationPickerCommit"));
    EXPECT_EQ(other->GetSelection(), heist->GetRootFolder());
    std::weak_ptr<QuilloUser> const released = user;
    user.reset();
    RunEvents();
    EXPECT_TRUE(released.expired());
}

TEST_F(FolderPickerTest, AFolderThatWasSetAsideByNobodyIsLeftAlone) {
    // A folder that its parent does not list, as a host may keep one from an earlier session.
    auto const unlisted = MakeNode<CountingFolder>("Kept", root);
    ShowFolders(unlisted);
    Receive(root, {"A"});
    RunEvents();
    EXPECT_EQ(user->GetProposedSelection(), unlisted);
    EXPECT_THAT(TreeRows(), ElementsAre("Assets"));
    // One whose tree is gone shows nothing.
    ShowFolders(std::make_shared<CountingFolder>(nullptr));
    EXPECT_THAT(TreeRows(), IsEmpty());
    EXPECT_EQ(HeaderTexts(), ";;");
}

TEST_F(FolderPickerTest, AnyNameIsShownInTheTreeAndInThePathOfWhatIsChosen) {
    std::string const plain[] = {std::string(200, 'W'), "\xF0\x9F\x8E\xAC Dailies",
                                 "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "a/b & <b>c</b>", ""};
    std::vector<std::pair<std::string, std::string>> rows{{"tab\tline\nbell\a", "tab line bell "}};
    for (auto const& name : plain)
        rows.emplace_back(name, name);
    for (auto const& [name, shown] : rows) {
        SCOPED_TRACE(name);
        auto const folder = Receive(root, {name}).front();
        ShowFolders(folder);
        EXPECT_THAT(TreeRows(), ElementsAre("Assets", "." + shown + "*"));
        EXPECT_GT(Tree().visualRect(Tree().currentIndex()).height(), 10);
        EXPECT_EQ(Tree().horizontalScrollBar()->value(), 0);
        Click(Button("LocationPickerCommit"));

        auto const review = factory::CreateView(ID::ReviewInQuillo, model);
        window.Add(review, {0, 0, 340, 105});
        RunEvents();
        auto const link = Find<moxui::controls::UI_HotTextButton>(*review);
        EXPECT_EQ(UTF16to8(link->GetText()), "Promos/Spring/" + name);
        EXPECT_EQ(UTF16to8(link->UI_GetToolTip()), "Promos/Spring/" + name);
        auto const place = link->UI_GetLocalRectF(true);
        EXPECT_LE(place.x + place.width, 340);
        EXPECT_LT(place.height, 30) << "more than one line";
        window.Container().ChildRemoveAll();
    }
}

TEST_F(FolderPickerTest, LargeTreesAreWhole) {
    std::vector<std::string> names;
    for (int i = 0; i < 5000; ++i)
        names.push_back("Shot " + std::to_string(i));
    auto folder = root;
    for (auto const& name : {"1", "2", "3"})
        folder = Receive(folder, {name}).front();
    for (int depth = 0; depth < 500; ++depth)
        folder = Receive(folder, {"deep " + std::to_string(depth)}).front();
    ShowFolders(folder);
    Receive(folder, names);
    RunEvents();
    EXPECT_EQ(Find<moxui::controls::UI_MultiColumnTree>(*view)->GetRowCount(), 5504U);
    EXPECT_EQ(TreeRows().size(), 504U);
    EXPECT_EQ(Fetches(folder->GetFolders().back()), 1);
}

}  // namespace
}  // namespace quillomoxui::view
