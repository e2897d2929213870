#include <gmock/gmock.h>

#include <QTest>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_HotTextButton.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "tests/quillomoxui/view/ShareViewsFixture.h"

namespace quillomoxui::view {
namespace {

using moxcore::string::AsciiToUTF16;
using moxcore::string::UTF16to8;
using moxui::controls::UI_HotTextButton;
using moxui::controls::UI_Popup;
using moxui::controls::UI_StaticText;
using moxui::controls::UI_TextButton;
using testsupport::Find;
using testsupport::FindText;
using testsupport::RunEvents;
using testsupport::WidgetOf;
using ID = ShareForReviewViewID;

/// A user whose tree holds one folder, "Dailies", below one of each kind.
class ReviewViewTest : public ShareViewsFixture {
protected:
    ReviewViewTest() {
        folder->SetName(AsciiToUTF16("Dailies"));
        root->SetFolders({folder});
        project->SetRootFolder(root);
        workspace->SetProjects({project});
        account->SetWorkspaces({workspace});
        user->SetAccounts({account});
        model->SetUser(user);
    }
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account = std::make_shared<QuilloAccount>(user);
    std::shared_ptr<QuilloWorkspace> workspace = std::make_shared<QuilloWorkspace>(account);
    std::shared_ptr<QuilloProject> project = std::make_shared<QuilloProject>(workspace);
    std::shared_ptr<QuilloFolder> root = std::make_shared<QuilloFolder>(project);
    std::shared_ptr<QuilloFolder> folder = std::make_shared<QuilloFolder>(root);
};

TEST_F(ReviewViewTest, TheLocationLeadsToThePickersStepThatIsDue) {
    for (bool const chosen : {false, true}) {
        user->SetSelection(chosen ? folder : nullptr);
        Show(ID::ReviewInQuillo);
        auto const path = UTF16to8(user->GetSelectionPath());
        auto const link = Find<UI_HotTextButton>(*view);
        EXPECT_EQ(UTF16to8(link->GetText()), chosen ? path : "Select Quillo Location...");
        EXPECT_EQ(UTF16to8(link->UI_GetToolTip()), chosen ? path : "");

        for (bool const byKeyboard : {false, true}) {
            model->SetCurrentViewID(ID::ReviewInQuillo);
            if (byKeyboard)
                QTest::keyClick(&WidgetOf(*link), Qt::Key_Return);
            else
                QTest::mousePress(&WidgetOf(*link), Qt::LeftButton);
            EXPECT_EQ(model->GetCurrentViewID(), chosen ? ID::SelectFolder : ID::SelectProject)
                << chosen << byKeyboard;
        }
    }
}

TEST_F(ReviewViewTest, AFolderThatIsGoneIsMissedUntilAnotherIsSelected) {
    user->SetSelection(folder);
    Show(ID::ReviewInQuillo);
    auto link = Find<UI_HotTextButton>(*view);
    auto const path = UTF16to8(user->GetSelectionPath());
    root->SetFolders({});
    for (bool const isNewView : {false, true}) {
        if (isNewView) Show(ID::ReviewInQuillo);
        RunEvents();
        link = Find<UI_HotTextButton>(*view);
        EXPECT_EQ(UTF16to8(link->GetText()), "The folder is gone, select another...");
        EXPECT_THAT(UTF16to8(link->UI_GetToolTip()), testing::EndsWith("\n" + path));
        QTest::mousePress(&WidgetOf(*link), Qt::LeftButton);
        EXPECT_EQ(model->GetCurrentViewID(), ID::SelectProject);
    }
    root->SetFolders({folder});
    for (auto const& selection : {folder, std::shared_ptr<QuilloFolder>()}) {
        user->SetSelection(selection);
        RunEvents();
        EXPECT_EQ(UTF16to8(link->GetText()),
                  selection ? UTF16to8(user->GetSelectionPath()) : "Select Quillo Location...");
    }
}

TEST_F(ReviewViewTest, TheFormIsThatOfTheUserThereIs) {
    auto before = std::make_shared<QuilloUser>();
    model->SetUser(before);
    Show(ID::ReviewInQuillo);
    auto const link = Find<UI_HotTextButton>(*view);
    user->SetSelection(folder);
    model->SetUser(user);
    RunEvents();
    auto const path = UTF16to8(user->GetSelectionPath());
    before->SetSelection(std::make_shared<QuilloFolder>(nullptr));
    RunEvents();
    EXPECT_EQ(UTF16to8(link->GetText()), path);
    QTest::mousePress(&WidgetOf(*link), Qt::LeftButton);
    EXPECT_EQ(model->GetCurrentViewID(), ID::SelectFolder);
    std::weak_ptr<QuilloUser> const released = before;
    before.reset();
    EXPECT_TRUE(released.expired());

    model->SetUser(std::make_shared<QuilloUser>());
    RunEvents();
    EXPECT_EQ(UTF16to8(link->GetText()), "Select Quillo Location...");
    EXPECT_EQ(UTF16to8(link->UI_GetToolTip()), "");
}

TEST_F(ReviewViewTest, ThePresetIsTheMenusAlone) {
    Show(ID::ReviewInQuillo);
    auto const picker = Find<UI_Popup>(*view);
    std::vector<std::string> texts;
    for (int i = 0; i < picker->GetItemCount(); ++i)
        texts.push_back(UTF16to8(picker->GetItemText(i)));
    EXPECT_THAT(texts, testing::ElementsAre("Preset Settings", "", "Web 720", "Web 1080", "Web 4k",
                                            "ProRes 422"));
    EXPECT_EQ(picker->GetValue(), 3);
}

TEST_F(ReviewViewTest, EveryPressOnShareStartsAShare) {
    int asked = 0;
    model->SetAssetDataMethods(
        [&](auto&, auto&) {
            ++asked;
            return false;
        },
        [](auto&&...) { return false; }, [](auto&&...) { return false; });
    user->SetSelection(folder);
    Show(ID::ReviewInQuillo);
    auto const share = FindText<UI_TextButton>(*view, "Share");
    Click(*share);
    Click(*share);
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(share->UI_IsEnabled());
}

}  // namespace
}  // namespace quillomoxui::view
