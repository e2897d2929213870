#include "moxui/ui/UI_Dialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QTest>
#include <QWindow>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_TextButton.h"
#include "moxworkspace/workspace/WorkspaceUtils.h"
#include "support/TestWindow.h"

namespace moxui::ui {
namespace {

using controls::UI_TextButton;
using moxcore::string::AsciiToUTF16;
using moxworkspace::workspace::WorkspaceUtils;
using testsupport::RunEvents;
using testsupport::WidgetOf;
using Result = UI_Dialog::Result;

boost::intrusive_ptr<UI_Dialog> MakeDialog(OS_Window const& parent) {
    boost::intrusive_ptr<UI_Dialog> const dialog(
        new UI_Dialog(nullptr, AsciiToUTF16("Where to?"), parent, true));
    dialog->SetContentSize(200, 100);
    dialog->Position();
    return dialog;
}

void Later(std::function<void()> act) {
    QMetaObject::invokeMethod(qApp, std::move(act), Qt::QueuedConnection);
}

/// A dialog over a window, with a cancel, a commit and one more button.
class Dialog : public ::testing::Test {
protected:
    Dialog() {
        window.Widget().setGeometry(150, 150, 400, 300);
        dialog = MakeDialog(window.Container().UI_GetOSWindow());
        more = AddButton(0);
        commit = AddButton(60);
        cancel = AddButton(120);
        dialog->SetButtons(cancel, commit);
    }
    ~Dialog() override {
        dialog.reset();
        RunEvents();
    }

    boost::intrusive_ptr<UI_TextButton> AddButton(float x) {
        boost::intrusive_ptr<UI_TextButton> button(new UI_TextButton);
        dialog->GetContentContainer()->ChildPushBack(button);
        button->UI_SetLocalRectF({x, 10, 50, 20});
        button->UI_Show(true);
        return button;
    }
    /// Shows the dialog, does `act` in it, and says how it ended.
    Result ShowAnd(std::function<void()> act) {
        Later(std::move(act));
        auto const result = dialog->ShowModal();
        RunEvents();
        EXPECT_FALSE(WidgetOf(*dialog).isVisible());
        return result;
    }
    void Press(Qt::Key key) {
        auto* const focused = WidgetOf(*dialog).focusWidget();
        QTest::keyClick(focused ? focused : &WidgetOf(*dialog), key);
    }

    testsupport::TestWindow window;
    boost::intrusive_ptr<UI_Dialog> dialog;
    boost::intrusive_ptr<UI_TextButton> cancel, commit, more;
};

TEST_F(Dialog, EndsByItsButtonsAfterAllThatHearOfThePress) {
    std::string heard;
    auto const listen = [&](auto const& button, char const* name) {
        button->NotifyWhenChanged([&heard, name](Message*) { heard += name; });
    };
    listen(cancel, "cancel ");
    listen(commit, "commit ");
    listen(more, "more ");
    struct Case {
        char const* what;
        std::function<void()> act;
        Result result;
        char const* heard;
    };
    for (auto const& [what, act, result, expected] : std::vector<Case>{
             {"cancel clicked", [&] { QTest::mouseClick(&WidgetOf(*cancel), Qt::LeftButton); },
              Result::Cancelled, "cancel "},
             {"commit clicked", [&] { QTest::mouseClick(&WidgetOf(*commit), Qt::LeftButton); },
              Result::Committed, "commit "},
             {"Escape", [&] { Press(Qt::Key_Escape); }, Result::Cancelled, "cancel "},
             {"the close box", [&] { WidgetOf(*dialog).close(); }, Result::Cancelled, "cancel "},
             {"Enter in the content",
              [&] {
                  WidgetOf(*dialog).setFocus();
                  Press(Qt::Key_Return);
              },
              Result::Committed, "commit "},
             {"Enter on another button, then Escape",
              [&] {
                  more->UI_SetFocus();
                  Press(Qt::Key_Enter);
                  Press(Qt::Key_Escape);
              },
              Result::Cancelled, "more cancel "},
             {"Enter while commit is disabled, then Close",
              [&] {
                  commit->UI_SetEnabled(false);
                  WidgetOf(*dialog).setFocus();
                  Press(Qt::Key_Return);
                  dialog->Close();
              },
              Result::Closed, ""},
             {"Escape while cancel is disabled",
              [&] {
                  cancel->UI_SetEnabled(false);
                  Press(Qt::Key_Escape);
              },
              Result::Closed, ""},
         }) {
        heard.clear();
        EXPECT_EQ(ShowAnd(act), result) << what;
        EXPECT_EQ(heard, expected) << what;
        commit->UI_SetEnabled(true);
        cancel->UI_SetEnabled(true);
    }
}

TEST_F(Dialog, ACommitThatWasRefusedEndsNothing) {
    auto const refusing = AddButton(180);
    refusing->NotifyWhenChanged([&](Message*) { refusing->UI_SetEnabled(false); });
    dialog->SetButtons(cancel, refusing);
    EXPECT_EQ(ShowAnd([&] {
                  refusing->Press();
                  RunEvents();
                  EXPECT_TRUE(WidgetOf(*dialog).isVisible());
                  dialog->Close();
              }),
              Result::Closed);
}

TEST_F(Dialog, AHandlerMayCloseTheDialogAndLetGoOfTheButton) {
    commit->NotifyWhenChanged([this](Message*) {
        dialog->Close();
        dialog->GetContentContainer()->ChildRemoveAll();
        commit.reset();
    });
    EXPECT_EQ(ShowAnd([this] { commit->Press(); }), Result::Committed);
    dialog->SetButtons(nullptr, nullptr);
    EXPECT_EQ(ShowAnd([this] { Press(Qt::Key_Escape); }), Result::Closed);
    EXPECT_EQ(ShowAnd([this] { WidgetOf(*dialog).close(); }), Result::Closed);
}

TEST_F(Dialog, LiesOverItsParentAndOnTheScreenWithTheFocusInIt) {
    auto const before = window.Widget().isActiveWindow();
    ASSERT_TRUE(before);
    ShowAnd([this] {
        RunEvents();
        auto const off =
            WidgetOf(*dialog).frameGeometry().center() - window.Widget().frameGeometry().center();
        EXPECT_LE(off.manhattanLength(), 8) << "but for the frame, which is not known before";
        EXPECT_EQ(WidgetOf(*dialog).windowHandle()->transientParent(),
                  window.Widget().windowHandle());
        EXPECT_TRUE(more->UI_HasFocus());
        auto const corner = WidgetOf(*dialog).geometry().topLeft();
        dialog->UI_SetLocalRectF({0, 0, 220, 110});  // its place is the user's by now
        EXPECT_EQ(WidgetOf(*dialog).geometry(), QRect(corner, QSize(220, 110)));
        dialog->UI_Show(false);
    });
    EXPECT_TRUE(window.Widget().isActiveWindow());
    window.Widget().move(-380, 0);
    dialog->SetContentSize(200, 100);
    EXPECT_TRUE(
        QGuiApplication::primaryScreen()->geometry().contains(WidgetOf(*dialog).geometry()));
}

TEST_F(Dialog, GivesTheFocusToItsParentWhereNoWindowHadIt) {
    QWidget other;
    other.show();
    other.activateWindow();
    RunEvents();
    other.close();
    ASSERT_EQ(QApplication::activeWindow(), nullptr);
    ShowAnd([this] {
        RunEvents();
        EXPECT_TRUE(WidgetOf(*dialog).isActiveWindow());
        dialog->Close();
    });
    EXPECT_TRUE(window.Widget().isActiveWindow());
}

TEST_F(Dialog, AnotherMayBeShownMeanwhile) {
    Result inner = Result::Committed;
    auto const outer = ShowAnd([&] {
        auto const second = MakeDialog(dialog->UI_GetOSWindow());
        Later([&] { QTest::keyClick(&WidgetOf(*second), Qt::Key_Escape); });
        EXPECT_EQ(dialog->ShowModal(), Result::Closed) << "it is shown already";
        inner = second->ShowModal();
        EXPECT_TRUE(WidgetOf(*dialog).isVisible());
        commit->Press();
    });
    EXPECT_EQ(inner, Result::Closed);
    EXPECT_EQ(outer, Result::Committed);
}

TEST_F(Dialog, EndsWhenItsParentDies) {
    auto parent = std::make_unique<QWidget>();
    parent->show();
    auto const node = backend::WrapWidget(parent.get());
    dialog = MakeDialog(node->UI_GetOSWindow());
    EXPECT_EQ(ShowAnd([&] {
                  parent.reset();
                  EXPECT_FALSE(WidgetOf(*dialog).isVisible());
                  dialog->Close();
              }),
              Result::Closed);
    EXPECT_EQ(ShowAnd([&] { dialog->Close(); }), Result::Closed) << "over nothing";
}

TEST_F(Dialog, AModelessOneReturnsAtOnceAndEndsWithItsButtons) {
    dialog->UI_Show(true);
    RunEvents();
    EXPECT_TRUE(WidgetOf(*dialog).isVisible());
    cancel->Press();
    // The press before this one does not end the next showing.
    dialog->UI_Show(false);
    dialog->UI_Show(true);
    RunEvents();
    EXPECT_TRUE(dialog->UI_IsViewVisible());
    Press(Qt::Key_Escape);
    RunEvents();
    EXPECT_FALSE(dialog->UI_IsViewVisible());
}

TEST_F(Dialog, TheHostsParentForDialogsIsNotKept) {
    auto node = backend::WrapWidget(&window.Widget());
    WorkspaceUtils::SetModalDialogParentNode(node);
    EXPECT_EQ(WorkspaceUtils::GetModalDialogParentNode(), node);
    node.reset();
    EXPECT_EQ(WorkspaceUtils::GetModalDialogParentNode(), nullptr);
}

}  // namespace
}  // namespace moxui::ui
