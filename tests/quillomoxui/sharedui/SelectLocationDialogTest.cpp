#include "quillomoxui/sharedui/SelectLocationDialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>

#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"
#include "moxworkspace/workspace/WorkspaceUtils.h"
#include "tests/quillomoxui/view/Locations.h"
#include "tests/support/TestWindow.h"

namespace quillomoxui::sharedui {
namespace {

using moxworkspace::workspace::WorkspaceUtils;
using testsupport::RunEvents;

/// What a call was answered with.
struct Outcome {
    int answers = 0;
    moxcore::utility::Guid folderID;
    std::string path;
    bool hasReturned = false;

    friend bool operator==(Outcome const&, Outcome const&) = default;
};

class SelectLocationDialogTest : public testing::Test {
protected:
    SelectLocationDialogTest() {
        auto const account = MakeNode<QuilloAccount>("Acme", user);
        user->SetAccounts({account});
        auto const workspace = ReceiveWorkspaces(account, {"Promos"}).front();
        root = ReceiveProjects(workspace, {"Spring"}).front()->GetRootFolder();
        WorkspaceUtils::SetModalDialogParentNode(parent);
    }
    ~SelectLocationDialogTest() override { WorkspaceUtils::SetModalDialogParentNode(nullptr); }

    /// Asks for a location; `step` runs while the dialog is shown.
    Outcome Ask(std::function<void()> const& step) {
        Outcome outcome;
        QTimer::singleShot(0, [&] {
            RunEvents();
            step();
            RunEvents();
        });
        ShowSelectLocationDialogCentered(user, [&](auto const& folderID, auto const& path) {
            EXPECT_FALSE(outcome.hasReturned);
            ++outcome.answers;
            outcome.folderID = folderID;
            outcome.path = moxcore::string::UTF16to8(path);
        });
        outcome.hasReturned = true;
        RunEvents();
        return outcome;
    }
    Outcome const cancelled{1, {}, "", true};
    Outcome Chosen() const { return {1, root->GetID(), "Promos/Spring", true}; }

    static QWidget* Dialog() { return QApplication::activeModalWidget(); }
    static void Press(char const* id) {
        QTest::mouseClick(Dialog()->findChild<QWidget*>(id), Qt::LeftButton);
    }
    static void Cancel() { Press("LocationPickerCancel"); }
    static void Choose() { Press("LocationPickerCommit"); }
    /// Goes to the first project and on to its folders, by keyboard.
    static void PickProject() {
        auto* row = Dialog()->focusWidget();
        for (int i = 0; i < 3 && row->accessibleName() != "Spring"; ++i) {
            QTest::keyClick(row, Qt::Key_Tab);
            row = Dialog()->focusWidget();
        }
        EXPECT_EQ(row->accessibleName(), "Spring");
        QTest::keyClick(row, Qt::Key_Return);
        RunEvents();
    }

    QWidget window;
    boost::intrusive_ptr<moxui::ui::UI_Node> parent = moxui::backend::WrapWidget(&window);
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloFolder> root;
};

TEST_F(SelectLocationDialogTest, AnswersOnceHoweverItEnds) {
    auto const close = [] { Dialog()->close(); };
    auto const escape = [] { QTest::keyClick(Dialog(), Qt::Key_Escape); };
    auto const choose = [] {
        PickProject();
        Choose();
    };
    auto const chooseByKeyboard = [] {
        PickProject();
        QTest::keyClick(Dialog()->focusWidget(), Qt::Key_Return);
    };
    struct Case {
        char const* name;
        std::function<void()> step;
        bool chooses;
    };
    for (auto const& [name, step, chooses] : std::vector<Case>{
             {"cancel", &Cancel, false},
             {"close", close, false},
             {"escape", escape, false},
             {"choose", choose, true},
             {"Enter", chooseByKeyboard, true},
             {"nothing to choose", [] { Choose(); Cancel(); }, false}}) {
        user->SetProposedSelection(nullptr);
        user->SetSelection(nullptr);
        EXPECT_EQ(Ask(step), chooses ? Chosen() : cancelled) << name;
        EXPECT_EQ(Dialog(), nullptr) << name;
    }
}

TEST_F(SelectLocationDialogTest, WithoutAWindowToBeShownOverItIsCancelled) {
    WorkspaceUtils::SetModalDialogParentNode(nullptr);
    EXPECT_EQ(Ask([] {}), cancelled);
}

TEST_F(SelectLocationDialogTest, OneThatIsAskedFromAnotherReturnsFirst) {
    for (bool const innerChooses : {false, true}) {
        Outcome inner;
        auto const outer = Ask([&] {
            PickProject();
            inner = Ask([&] {
                PickProject();
                innerChooses ? Choose() : Cancel();
            });
            RunEvents();
            EXPECT_NE(Dialog(), nullptr);
            EXPECT_TRUE(Dialog()->findChild<QWidget*>("LocationPickerCommit")->isVisible());
            Choose();
        });
        EXPECT_EQ(inner, innerChooses ? Chosen() : cancelled);
        EXPECT_EQ(outer, Chosen());
    }
}

}  // namespace
}  // namespace quillomoxui::sharedui
