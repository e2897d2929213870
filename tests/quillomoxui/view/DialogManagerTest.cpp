#include "quillomoxui/view/DialogManager.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "moxworkspace/workspace/WorkspaceUtils.h"
#include "tests/support/TestWindow.h"

namespace quillomoxui::view {
namespace {

using moxui::controls::UI_TextButton;
using moxui::ui::UI_SubView;
using moxworkspace::workspace::WorkspaceUtils;
using testsupport::RunEvents;
using testsupport::WidgetOf;

/// A view with two buttons, of a fixed size.
class Form : public UI_SubView {
public:
    Form() : cancel(new UI_TextButton), commit(new UI_TextButton) {
        cancel->UI_SetNodeID("Cancel");
        commit->UI_SetNodeID("Commit");
        for (auto const& button : {cancel, commit}) {
            button->UI_Show(true);
            ChildPushBack(button);
        }
        cancel->UI_SetLocalRectF({10, 10, 60, 20});
        commit->UI_SetLocalRectF({80, 10, 60, 20});
        UI_SetLocalRectF({0, 0, 150, 40});
    }
    moxcore::geom::PointT<float> UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const override {
        return {150, 40};
    }
    boost::intrusive_ptr<UI_TextButton> cancel, commit;
};

class DialogManagerTest : public testing::Test {
protected:
    DialogManagerTest() {
        window.Widget().setGeometry(150, 150, 400, 300);
        parent = moxui::backend::WrapWidget(&window.Widget());
        WorkspaceUtils::SetModalDialogParentNode(parent);
        for (auto const& button : {form->cancel, form->commit})
            button->NotifyWhenChanged(
                [this, id = button->UI_GetNodeID()](moxui::ui::Message*) { pressed += id; });
    }
    ~DialogManagerTest() override {
        WorkspaceUtils::SetModalDialogParentNode(nullptr);
        manager.reset();
        RunEvents();
    }

    /// Does `act` once the dialog is shown, and returns when it has been closed.
    void ShowAnd(std::function<void()> act) {
        QMetaObject::invokeMethod(qApp, std::move(act), Qt::QueuedConnection);
        manager->ShowWindow();
        RunEvents();
    }

    testsupport::TestWindow window;
    boost::intrusive_ptr<moxui::ui::UI_Node> parent;
    std::shared_ptr<PopupManager> manager = CreateDialogManager();
    boost::intrusive_ptr<Form> form{new Form};
    std::string pressed;
};

TEST_F(DialogManagerTest, ShowsItsSectionsInADialogThatTheViewsButtonsEnd) {
    auto const section = manager->InsertPopupSection(7, form);
    manager->MaximizePopupSection(section);
    manager->SetButtons(form, "Cancel", "Commit");
    manager->SetButtons(form, "Cancel", "NoSuchButton");  // changes nothing
    for (char const* const id : {"Commit", "Cancel"}) {
        ShowAnd([&] {
            EXPECT_TRUE(WidgetOf(*form).isVisible());
            auto const* const dialog = WidgetOf(*form).window();
            EXPECT_TRUE(dialog->isModal());
            EXPECT_EQ(WidgetOf(*form).size(), QSize(150, 40));
            EXPECT_TRUE(dialog->frameGeometry().intersects(window.Widget().frameGeometry()));
            QTest::mouseClick(&WidgetOf(id[1] == 'o' ? *form->commit : *form->cancel),
                              Qt::LeftButton);
        });
        EXPECT_FALSE(WidgetOf(*form).isVisible());
    }
    EXPECT_EQ(pressed, "CommitCancel");
    ShowAnd([&] { QTest::keyClick(WidgetOf(*form).window(), Qt::Key_Escape); });
    EXPECT_EQ(pressed, "CommitCancelCancel") << "Escape presses Cancel";

    // The sections outlive a window that is let go of.
    manager->DestructWindow();
    EXPECT_EQ(section->UI_GetRootNode(), section->UI_GetParentNode());
    ShowAnd([&] { manager->HideWindow(); });
}

TEST_F(DialogManagerTest, InsertsASectionHiddenWhileItsContentHasNoSize) {
    EXPECT_TRUE(manager->InsertPopupSection(0, form)->UI_IsViewVisible());
    EXPECT_FALSE(manager->InsertPopupSection(0, new UI_SubView)->UI_IsViewVisible());
    EXPECT_FALSE(manager->InsertPopupSection(0, nullptr)->UI_IsViewVisible());
}

TEST_F(DialogManagerTest, WithoutAWindowToStandOverItReturnsAtOnce) {
    manager->InsertPopupSection(0, form);
    WorkspaceUtils::SetModalDialogParentNode(nullptr);
    manager->ShowWindow();
    manager->DestructWindow();
    EXPECT_FALSE(WidgetOf(*form).isVisible());
}

TEST_F(DialogManagerTest, WhatIsNoButtonIsNotTakenForOne) {
    boost::intrusive_ptr<UI_SubView> const label(new moxui::controls::UI_StaticText);
    label->UI_SetNodeID("Label");
    form->ChildPushBack(label);
    EXPECT_ANY_THROW(manager->SetButtons(form, "Cancel", "Label"));
}

}  // namespace
}  // namespace quillomoxui::view
