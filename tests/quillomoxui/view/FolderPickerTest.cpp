#include <QScrollBar>

#include "moxui/controls/UI_HotTextButton.h"
#include "tests/quillomoxui/view/FolderPickerFixture.h"

namespace quillomoxui::view {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using FolderPickerTest = FolderPickerFixture;

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
