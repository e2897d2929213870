#pragma once

#include <gmock/gmock.h>

#include <QAccessible>
#include <QTest>
#include <QTreeView>

#include "moxui/controls/UI_MultiColumnTree.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_ScrollView.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/view/Factory.h"
#include "quillomoxui/view/FolderPickerHeaderView.h"
#include "quillomoxui/view/LocationPickerView.h"
#include "quillomoxui/view/ProjectListItem.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/view/Locations.h"
#include "tests/support/TestWindow.h"
#include "tests/support/Views.h"

namespace quillomoxui::view {

using ID = ShareForReviewViewID;
using moxcore::string::UTF16to8;
using testsupport::Find;
using testsupport::FindText;
using testsupport::RunEvents;
using testsupport::WidgetOf;

/// The picker of a user with the accounts Acme and Zeta; Acme has the workspace Promos, and that
/// the projects Spring and Summer.
class PickerTest : public testing::Test {
protected:
    PickerTest() {
        model->SetUser(user);
        acme = MakeNode<QuilloAccount>("Acme", user);
        zeta = MakeNode<QuilloAccount>("Zeta", user);
        user->SetAccounts({acme, zeta});
        promos = ReceiveWorkspaces(acme, {"Promos"}).front();
        auto const projects = ReceiveProjects(promos, {"Spring", "Summer"});
        spring = projects[0];
        summer = projects[1];
    }
    ~PickerTest() override {
        view.reset();
        RunEvents();
    }

    /// The picker at the step `id`, in a window, after it has heard the properties' values.
    LocationPickerView& Show(ID id) {
        model->SetCurrentViewID(id);
        view = static_cast<LocationPickerView*>(factory::CreateView(id, model).get());
        auto const size = view->UI_GetRecommendedSize(nullptr);
        window.Add(view, {0, 0, size.x, size.y});
        return *view;
    }
    /// The folder step on `folder`.
    LocationPickerView& ShowFolders(std::shared_ptr<QuilloFolder> const& folder) {
        user->SetProposedSelection(folder);
        return Show(ID::SelectFolder);
    }

    std::vector<ProjectListItem*> Rows() {
        std::vector<ProjectListItem*> rows;
        testsupport::ForEach<ProjectListItem>(*view,
                                              [&](ProjectListItem& row) { rows.push_back(&row); });
        return rows;
    }
    ProjectListItem& Row(std::string const& project) {
        for (auto* const row : Rows())
            if (UTF16to8(row->GetProject()->GetName()) == project) return *row;
        throw std::runtime_error("There is no row of " + project + ".");
    }
    ProjectListItem* FocusedRow() {
        for (auto* const row : Rows())
            if (row->UI_HasFocus()) return row;
        return nullptr;
    }
    std::vector<std::string> ProjectNames() {
        std::vector<std::string> names;
        for (auto* const row : Rows())
            names.push_back(UTF16to8(row->GetProject()->GetName()));
        return names;
    }

    QTreeView& Tree() {
        return static_cast<QTreeView&>(
            WidgetOf(*Find<moxui::controls::UI_MultiColumnTree>(*view)));
    }
    /// The rows of the tree that are not in a closed one, each as deep as it has dots before it, the
    /// selected one with a star after it.
    std::vector<std::string> TreeRows() {
        auto& tree = Tree();
        std::vector<std::string> rows;
        for (auto index = tree.model()->index(0, 0); index.isValid();
             index = tree.indexBelow(index)) {
            std::string text;
            for (auto above = index.parent(); above.isValid(); above = above.parent())
                text += ".";
            text += index.data().toString().toStdString();
            rows.push_back(text + (tree.selectionModel()->isSelected(index) ? "*" : ""));
        }
        return rows;
    }
    std::string HeaderTexts() {
        std::string texts;
        testsupport::ForEach<moxui::controls::UI_StaticText>(
            *Find<FolderPickerHeaderView>(*view),
            [&](auto& text) { texts += UTF16to8(text.GetText()) + ";"; });
        return texts;
    }
    moxui::controls::UI_TextButton& Button(char const* id) {
        return dynamic_cast<moxui::controls::UI_TextButton&>(*view->UI_ChildGetFromID(id));
    }
    /// Presses a key where the focus is, in an open menu if there is one.
    static void Key(Qt::Key key) {
        auto* const menu = QApplication::activePopupWidget();
        auto* const inMenu = menu && menu->focusWidget() ? menu->focusWidget() : menu;
        QTest::keyClick(inMenu ? inMenu : QApplication::focusWidget(), key);
        RunEvents();
    }
    static void Click(moxui::ui::UI_Node const& node) {
        QTest::mouseClick(&WidgetOf(node), Qt::LeftButton);
        RunEvents();
    }

    std::shared_ptr<ShareForReviewViewModel> model = std::make_shared<ShareForReviewViewModel>();
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> acme, zeta;
    std::shared_ptr<QuilloWorkspace> promos;
    std::shared_ptr<QuilloProject> spring, summer;
    testsupport::TestWindow window;
    boost::intrusive_ptr<LocationPickerView> view;
};

}  // namespace quillomoxui::view
