#include "quillomoxui/sharedui/SelectLocationDialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <memory>
#include <stdexcept>

#include "moxcore/config/Error.h"
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
    SelectLocationDialogTest() { WorkspaceUtils::SetModalDialogParentNode(parent); }
    ~SelectLocationDialogTest() override { WorkspaceUtils::SetModalDialogParentNode(nullptr); }

    /// A user who has one project.
    static std::shared_ptr<QuilloUser> MakeUser() {
        auto const user = std::make_shared<QuilloUser>();
        auto const account = MakeNode<QuilloAccount>("Acme", user);
        user->SetAccounts({account});
        ReceiveProjects(ReceiveWorkspaces(account, {"Promos"}).front(), {"Spring"});
        return user;
    }

    /// Asks a user for a location; `step` runs while the dialog is shown, `onAnswer` when it ends.
    Outcome Ask(
        std::function<void()> const& step, std::function<void()> const& onAnswer = [] {}) {
        Outcome outcome;
        QTimer::singleShot(0, [&] {
            RunEvents();
            QPointer<QWidget> const dialog = Dialog();
            step();
            RunEvents();
            if (dialog && dialog->isVisible()) {
                ADD_FAILURE() << "The dialog has not ended.";
                dialog->hide();
            }
            // The dialog's loop does not see that it is to end while another one runs inside it.
            QMetaObject::invokeMethod(
                qApp, [] {}, Qt::QueuedConnection);
        });
        auto user = MakeUser();
        ShowSelectLocationDialogCentered(user, [&](auto const& folderID, auto const& path) {
            EXPECT_FALSE(outcome.hasReturned);
            ++outcome.answers;
            outcome.folderID = folderID;
            outcome.path = moxcore::string::UTF16to8(path);
            onAnswer();
        });
        outcome.hasReturned = true;
        RunEvents();
        // Nothing of the dialog is left that would keep the user.
        std::weak_ptr<QuilloUser> const released = user;
        user.reset();
        EXPECT_TRUE(released.expired());
        return outcome;
    }
    Outcome const cancelled{1, {}, "", true};
    Outcome const chosen{1, MakeNode<QuilloFolder>("root of Spring", nullptr)->GetID(),
                         "Promos/Spring", true};

    static QWidget* Dialog() { return QApplication::activeModalWidget(); }
    static void Press(char const* id) {
        for (auto* const button : Dialog()->findChildren<QWidget*>(id))
            if (button->isVisible()) return QTest::mouseClick(button, Qt::LeftButton);
        ADD_FAILURE() << "There is no button " << id << " to be seen.";
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

    testsupport::TestWindow window;
    boost::intrusive_ptr<moxui::ui::UI_Node> parent = moxui::backend::WrapWidget(&window.Widget());
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
    for (auto const& [name, step, chooses] : std::vector<Case>{{"cancel", &Cancel, false},
                                                               {"close", close, false},
                                                               {"escape", escape, false},
                                                               {"choose", choose, true},
                                                               {"Enter", chooseByKeyboard, true},
                                                               {"nothing to choose",
                                                                [] {
                                                                    Choose();
                                                                    Cancel();
                                                                },
                                                                false}}) {
        EXPECT_EQ(Ask(step), chooses ? chosen : cancelled) << name;
        EXPECT_EQ(Dialog(), nullptr) << name;
    }
}

TEST_F(SelectLocationDialogTest, AThousandOfThemLeaveNoWidgetBehind) {
    EXPECT_EQ(Ask(&Cancel), cancelled);
    auto const widgets = QApplication::allWidgets().size();
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(Ask(&Cancel), cancelled);
    EXPECT_EQ(QApplication::allWidgets().size(), widgets);
}

TEST_F(SelectLocationDialogTest, WhatFailsInOneCallReachesItsCallerAndLeavesTheNextAlone) {
    QTimer::singleShot(0, [] {
        RunEvents();
        Cancel();
    });
    bool hasEnded = false;
    try {
        ShowSelectLocationDialogCentered(
            MakeUser(), [](auto const&, auto const&) { throw std::runtime_error("of the host"); });
    } catch (std::runtime_error const& thrown) {
        hasEnded = Dialog() == nullptr;
        EXPECT_STREQ(thrown.what(), "of the host");
    }
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(Ask(&Cancel), cancelled);
}

TEST_F(SelectLocationDialogTest, RefusesANullUserAndLeavesOtherCallsAlone) {
    auto const unheard = [](auto const&, auto const&) { ADD_FAILURE(); };
    auto const refuse = [&] {
        auto const* const shown = Dialog();
        EXPECT_THROW(ShowSelectLocationDialogCentered(std::shared_ptr<QuilloUser>(), unheard),
                     moxcore::config::ContractViolation);
        EXPECT_THROW(ShowSelectLocationDialogCentered(
                         moxcore::classref::InterfaceRef<quillo::QuilloUser>(), unheard),
                     moxcore::config::ContractViolation);
        EXPECT_EQ(Dialog(), shown);
    };
    refuse();
    EXPECT_EQ(Ask(&Cancel), cancelled);
    EXPECT_EQ(Ask([&] {
                  PickProject();
                  refuse();
                  Choose();
              }),
              chosen);
}

TEST_F(SelectLocationDialogTest, AWindowThatDiesBelowItCancelsItAndItsProposal) {
    auto const user = MakeUser();
    auto host = std::make_unique<QWidget>();
    host->show();
    auto const node = moxui::backend::WrapWidget(host.get());
    WorkspaceUtils::SetModalDialogParentNode(node);
    QTimer::singleShot(0, [&] {
        RunEvents();
        PickProject();
        host.reset();
        if (auto* const left = Dialog()) {
            ADD_FAILURE() << "It outlives the window.";
            left->hide();
        }
    });
    int answers = 0;
    ShowSelectLocationDialogCentered(user, [&](auto const& folderID, auto const& path) {
        ++answers;
        EXPECT_TRUE(folderID.IsNull() && path.empty());
    });
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(user->GetProposedSelection(), nullptr);
    WorkspaceUtils::SetModalDialogParentNode(parent);
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
            Choose();
        });
        EXPECT_EQ(inner, innerChooses ? chosen : cancelled);
        EXPECT_EQ(outer, chosen);
    }
}

TEST_F(SelectLocationDialogTest, TheAnswerMayAskAgain) {
    Outcome again;
    auto const refused = Ask(&Cancel, [&] {
        again = Ask([] {
            PickProject();
            Choose();
        });
    });
    EXPECT_EQ(again, chosen);
    EXPECT_EQ(refused, cancelled);
}

}  // namespace
}  // namespace quillomoxui::sharedui
