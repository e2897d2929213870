#include "tests/quillomoxui/view/PickerTest.h"

namespace quillomoxui::view {
namespace {

using moxui::controls::UI_Popup;
using moxui::controls::UI_ScrollView;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Numbered(std::string const& stem, int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(stem + std::to_string(i));
    return names;
}

class ProjectPickerTest : public PickerTest {
protected:
    /// What of `row` is seen.
    int HeightInView(ProjectListItem const& row) {
        return WidgetOf(row).visibleRegion().boundingRect().height();
    }
    UI_ScrollView& Scroll() { return *Find<UI_ScrollView>(*view); }
};

TEST_F(ProjectPickerTest, OnlyTheCurrentStepIsShown) {
    for (auto const& [id, projects, folders] :
         std::vector<std::tuple<ID, bool, bool>>{{ID::SelectProject, true, false},
                                                 {ID::SelectFolder, false, true},
                                                 {ID::ReviewInQuillo, false, false}}) {
        Show(ID::SelectProject);
        model->SetCurrentViewID(id);
        RunEvents();
        EXPECT_EQ(WidgetOf(Scroll()).isVisible(), projects) << int(id);
        EXPECT_EQ(Tree().isVisible(), folders) << int(id);
    }
}

TEST_F(ProjectPickerTest, TheFirstAccountIsProposedUnlessOneIs) {
    for (auto const& proposed : {acme, zeta}) {
        user->SetProposedAccount(proposed == acme ? nullptr : proposed);
        Show(ID::SelectProject);
        EXPECT_EQ(user->GetProposedAccount(), proposed);
        EXPECT_EQ(Find<UI_Popup>(*view)->GetValue(), proposed == acme ? 0 : 1);
    }
    user->SetAccounts({});
    for (auto const& left : {zeta, std::shared_ptr<QuilloAccount>()}) {
        user->SetProposedAccount(left);
        Show(ID::SelectProject);
        EXPECT_EQ(user->GetProposedAccount(), left);
        EXPECT_EQ(Find<UI_Popup>(*view)->GetValue(), 0);
    }
    EXPECT_THAT(ProjectNames(), IsEmpty());
}

TEST_F(ProjectPickerTest, ChoosingAnAccountShowsItsProjectsAndNoOthers) {
    Show(ID::SelectProject);
    EXPECT_THAT(ProjectNames(), ElementsAre("Spring", "Summer"));

    Find<UI_Popup>(*view)->UI_SetFocus();
    for (auto const key : {Qt::Key_Space, Qt::Key_Down, Qt::Key_Return})
        Key(key);
    EXPECT_EQ(user->GetProposedAccount(), zeta);
    EXPECT_THAT(ProjectNames(), IsEmpty());
    // What comes for the account before is nobody's business any more, also what was on its way.
    ReceiveWorkspaces(acme, {"Late"});
    RunEvents();
    user->SetProposedAccount(acme);
    RunEvents();
    ReceiveWorkspaces(acme, {"Late again"});
    user->SetProposedAccount(zeta);
    RunEvents();
    EXPECT_FALSE(FindText<moxui::controls::UI_StaticText>(*view, "Late again"));
    EXPECT_FALSE(FindText<moxui::controls::UI_StaticText>(*view, "Late"));
    ReceiveProjects(ReceiveWorkspaces(zeta, {"Films"}).front(), {"Heist"});
    RunEvents();
    EXPECT_THAT(ProjectNames(), ElementsAre("Heist"));
    EXPECT_TRUE(FindText<moxui::controls::UI_StaticText>(*view, "Films"));
}

TEST_F(ProjectPickerTest, AnOpenMenuOfAccountsStaysOpenWhenTheirListIsFetchedAgain) {
    Show(ID::SelectProject);
    auto const menu = Find<UI_Popup>(*view);
    menu->UI_SetFocus();
    Key(Qt::Key_Space);
    Key(Qt::Key_Down);
    for (auto const& names : std::vector<std::vector<std::string>>{
             {"Acme", "Zeta"}, {"Abc", "Acme", "Mid", "Zeta"}, {"Mid", "Zeta"}}) {
        NodeVector<QuilloAccount> accounts;
        for (auto const& name : names)
            accounts.push_back(MakeNode<QuilloAccount>(name, user));
        user->SetAccounts(accounts);
        RunEvents();
        ASSERT_TRUE(QApplication::activePopupWidget()) << names.size();
        EXPECT_EQ(menu->GetItemCount(), int(names.size()));
        // The one that is gone is proposed no more: what is shown must be what the menu says.
        auto const proposed = accounts[std::size_t(menu->GetValue())];
        EXPECT_EQ(user->GetProposedAccount(), proposed);
        EXPECT_EQ(UTF16to8(proposed->GetName()), names.front() == "Mid" ? "Mid" : "Acme");
    }
    // What was highlighted still is.
    Key(Qt::Key_Return);
    EXPECT_EQ(UTF16to8(user->GetProposedAccount()->GetName()), "Zeta");
}

TEST_F(ProjectPickerTest, APressProposesTheRootFolderUnlessAFolderOfTheProjectIsProposed) {
    auto const inside = Receive(summer->GetRootFolder(), {"Dailies"}).front();
    for (auto const& [before, project, after] : std::vector<
             std::tuple<std::shared_ptr<QuilloFolder>, char const*, std::shared_ptr<QuilloFolder>>>{
             {nullptr, "Spring", spring->GetRootFolder()},
             {inside, "Spring", spring->GetRootFolder()},
             {inside, "Summer", inside}}) {
        for (auto const key : {Qt::Key(0), Qt::Key_Return, Qt::Key_Space}) {
            user->SetProposedSelection(before);
            Show(ID::SelectProject);
            auto& row = Row(project);
            if (key) {
                row.UI_SetFocus();
                QTest::keyClick(&WidgetOf(row), key);
            } else {
                QTest::mouseClick(&WidgetOf(row), Qt::LeftButton);
            }
            EXPECT_EQ(user->GetProposedSelection(), after) << project << key;
            EXPECT_EQ(model->GetCurrentViewID(), ID::SelectFolder) << project << key;
            RunEvents();
            // The keyboard goes on where it is of use.
            EXPECT_TRUE(Tree().hasFocus()) << project;
        }
    }
    Show(ID::SelectProject);
    QTest::mouseClick(&WidgetOf(Row("Spring")), Qt::RightButton);
    EXPECT_EQ(model->GetCurrentViewID(), ID::SelectProject);
}

TEST_F(ProjectPickerTest, RowsShowTheirStateAndTellIt) {
    user->SetProposedSelection(spring->GetRootFolder());
    Show(ID::SelectProject);
    auto const picture = [&](char const* name) {
        return testsupport::PictureOf(WidgetOf(Row(name))).pixelColor(300, 2);
    };
    auto const isSelected = [&](char const* name) {
        auto* const row = QAccessible::queryAccessibleInterface(&WidgetOf(Row(name)));
        EXPECT_EQ(row->role(), QAccessible::ListItem);
        EXPECT_EQ(row->text(QAccessible::Name).toStdString(), name);
        return bool(row->state().selected);
    };
    EXPECT_TRUE(isSelected("Spring"));
    EXPECT_FALSE(isSelected("Summer"));
    auto const highlight = picture("Spring");
    auto const plain = picture("Summer");
    EXPECT_NE(highlight, plain);

    auto const hover = [&](QEvent::Type type) {
        QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&WidgetOf(Row("Summer")),
                                    type == QEvent::Enter ? static_cast<QEvent*>(&enter) : &leave);
        return picture("Summer");
    };
    EXPECT_EQ(hover(QEvent::Enter), highlight);
    EXPECT_EQ(hover(QEvent::Leave), plain);

    user->SetProposedSelection(summer->GetRootFolder());
    RunEvents();
    EXPECT_FALSE(isSelected("Spring"));
    EXPECT_TRUE(isSelected("Summer"));
}

TEST_F(ProjectPickerTest, SectionsGrowWithTheirProjects) {
    Show(ID::SelectProject);
    for (int const count : {3, 0, 1}) {
        ReceiveProjects(promos, Numbered("P", count));
        RunEvents();
        auto const section = Find<WorkspaceSectionView>(*view);
        EXPECT_EQ(section->UI_GetLocalRectF(true),
                  (moxcore::geom::RectT<float>{0, 3, 340, 25.0F * count + 28}));
        EXPECT_EQ(Scroll().GetContentView()->UI_GetLocalRectF(true).height, 25 * count + 34);
    }
}

TEST_F(ProjectPickerTest, ALongListIsWorkedByKeyboardAndMadeAsItIsSeen) {
    ReceiveProjects(promos, Numbered("P", 500));
    Show(ID::SelectProject);
    Rows().front()->UI_SetFocus();
    EXPECT_GT(Rows().front()->ChildCount(), 0U);
    EXPECT_EQ(Rows().back()->ChildCount(), 0U);
    for (auto const& [key, focused] :
         std::vector<std::pair<Qt::Key, std::string>>{{Qt::Key_Down, "P1"},
                                                      {Qt::Key_End, "P499"},
                                                      {Qt::Key_Up, "P498"},
                                                      {Qt::Key_PageUp, "P487"},
                                                      {Qt::Key_PageDown, "P498"},
                                                      {Qt::Key_Home, "P0"}}) {
        Key(key);
        auto* const row = FocusedRow();
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(UTF16to8(row->GetProject()->GetName()), focused);
        EXPECT_EQ(HeightInView(*row), 20) << focused;
        auto const name = Find<moxui::controls::UI_StaticText>(*row);
        ASSERT_NE(name, nullptr) << focused;
        EXPECT_EQ(UTF16to8(name->GetText()), focused);
        EXPECT_EQ(dynamic_cast<moxui::controls::UI_StaticText*>((row->ChildBegin() + 1)->get()),
                  name.get());
    }
    Key(Qt::Key_End);
    Key(Qt::Key_Return);
    EXPECT_EQ(UTF16to8(user->GetProposedSelection()->GetName()), "root of P499");
}

TEST_F(ProjectPickerTest, AListThatIsFetchedAgainStaysWhereItIs) {
    ReceiveProjects(promos, Numbered("P", 100));
    for (bool const wholeWorkspaces : {false, true}) {
        Show(ID::SelectProject);
        user->SetProposedSelection(Row("P60").GetProject()->GetRootFolder());
        RunEvents();
        Row("P60").UI_SetFocus();
        RunEvents();
        auto const scrolled = Scroll().GetScrollPosition().y;
        ASSERT_GT(scrolled, 0);

        auto const before = Row("P60").GetProject();
        if (wholeWorkspaces) {
            auto const workspace = ReceiveWorkspaces(acme, {"Promos"}).front();
            RunEvents();
            ReceiveProjects(workspace, Numbered("P", 100));
        } else {
            ReceiveProjects(promos, Numbered("P", 100));
        }
        RunEvents();
        ASSERT_NE(Row("P60").GetProject(), before);
        EXPECT_EQ(Scroll().GetScrollPosition().y, scrolled);
        EXPECT_EQ(FocusedRow(), &Row("P60"));
        EXPECT_TRUE(Row("P60").IsSelected());
        EXPECT_EQ(user->GetProposedSelection(), Row("P60").GetProject()->GetRootFolder());
    }
}

TEST_F(ProjectPickerTest, AnyNameIsShownAndSafe) {
    std::string const names[] = {
        std::string(200, 'W'), "\xF0\x9F\x8E\xAC Film", "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",
        "tab\tline\nend",      "<b>bold</b> & more",    ""};
    for (auto const& name : names) {
        ReceiveProjects(promos, {name});
        Show(ID::SelectProject);
        auto& row = *Rows().front();
        auto const place = Find<moxui::controls::UI_StaticText>(row)->UI_GetLocalRectF(true);
        EXPECT_LE(place.x + place.width, 281.0F) << name;
        EXPECT_GT(place.height, 0) << name;
        Click(row);
        EXPECT_EQ(HeaderTexts(), name + ";Promos;");
    }
}

TEST_F(ProjectPickerTest, ViewsMayGoWhileTheirNewsIsOnItsWay) {
    for (auto const id : {ID::SelectProject, ID::SelectFolder}) {
        user->SetProposedSelection(spring->GetRootFolder());
        Show(id);
        model->SetCurrentViewID(ID::SelectProject);
        user->SetProposedAccount(id == ID::SelectProject ? zeta : acme);
        user->SetProposedSelection(summer->GetRootFolder());
        auto const inside = Receive(summer->GetRootFolder(), {"A", "B"});
        ReceiveProjects(ReceiveWorkspaces(acme, {"W", "V"}).front(), {"P", "Q"});
        window.Container().ChildRemoveAll();
        view.reset();
        RunEvents();
    }
    EXPECT_EQ(user->GetProposedSelection(), summer->GetRootFolder());
}

}  // namespace
}  // namespace quillomoxui::view
