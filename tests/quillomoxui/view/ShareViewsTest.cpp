#include <gmock/gmock.h>

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>

#include "moxcore/string/Conversions.h"
#include "moxui/controls/UI_HotTextButton.h"
#include "moxui/controls/UI_HotTextURL.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_ProgressBar.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/controls/UI_TextButton.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/sharedui/CallToActionButton.h"
#include "quillomoxui/view/WorkflowLabel.h"
#include "tests/quillomoxui/view/ShareViewsFixture.h"
#include "tests/support/Contrast.h"

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

using ShareViewsTest = ShareViewsFixture;

TEST_F(ShareViewsTest, EveryIDHasTheViewOfItsStepOrNone) {
    for (auto const id : {ID::None, ID::Initial, ID(11)})
        EXPECT_EQ(factory::CreateView(id, model), nullptr) << int(id);
    for (auto const id : {ID::DebugView, ID::ReviewInQuillo, ID::SigninPrompt, ID::CopyLinkSection,
                          ID::WaitingInQueue, ID::EncodingProgress, ID::UploadInProgress}) {
        auto const first = factory::CreateView(id, model);
        ASSERT_NE(first, nullptr) << int(id);
        EXPECT_NE(factory::CreateView(id, model), first);
    }
}

TEST_F(ShareViewsTest, TheSignInPromptSignsInAndMovesOnOnceSomebodyIs) {
    Show(ID::SigninPrompt);
    EXPECT_TRUE(Shows("Opening titles"));
    auto const button = FindText<UI_TextButton>(*view, "Sign in to Quillo");
    ASSERT_NE(button, nullptr);
    Click(*button);
    Click(*button);
    EXPECT_EQ(model->logins, 1);
    EXPECT_FALSE(button->UI_IsEnabled());
    model->SetSignInProgress({});
    RunEvents();
    EXPECT_TRUE(button->UI_IsEnabled());
    auto const place = button->UI_GetLocalRectF(true);
    EXPECT_EQ(place.x + place.width, 325);
    EXPECT_EQ(place.y + place.height, 100);

    model->SetIsLoggedIn(true);
    RunEvents();
    EXPECT_EQ(model->GetCurrentViewID(), ID::ReviewInQuillo);
    model->SetCurrentViewID(ID::SigninPrompt);
    model->SetIsLoggedIn(false);
    RunEvents();
    EXPECT_EQ(model->GetCurrentViewID(), ID::SigninPrompt);
    model->SetIsLoggedIn(true);
    model->SetIsLoggedIn(false);  // before anybody has heard of the sign-in
    RunEvents();
    EXPECT_EQ(model->GetCurrentViewID(), ID::SigninPrompt);
}

TEST_F(ShareViewsTest, TheSignInPromptSaysWhatItWaitsForAndHowItEnded) {
    using quilloauth::SignInStage;
    struct Row {
        SignInStage stage;
        char const* says;
        std::vector<std::string> buttons;  // those that can be pressed
    };
    constexpr char kFirst[] = "Sign in to Quillo to create a review link";
    constexpr char kSignIn[] = "Sign in to Quillo";
    constexpr char kCancel[] = "Cancel";
    Row const rows[] = {
        {SignInStage::Asking, kFirst, {kCancel}},
        {SignInStage::InBrowser, "Go on in the browser", {kCancel, "Open the page again"}},
        {SignInStage::Waiting, "not been available since 14:05.", {kCancel}},
        {SignInStage::Denied, "refused in the browser. Sign in again", {kSignIn}},
        {SignInStage::Expired, "within ten minutes. Sign in again", {kSignIn}},
        {SignInStage::NoBrowser, "could not be opened. Choose a default", {kSignIn}},
        {SignInStage::Unavailable, "Check the network connection", {kSignIn}},
        {SignInStage::Refused, "did not accept the sign-in", {kSignIn}},
        {SignInStage::None, kFirst, {kSignIn}},
    };
    setenv("TZ", "UTC", 1);
    setenv("LC_TIME", "de_DE", 1);
    Show(ID::SigninPrompt);
    for (auto const& row : rows) {
        SCOPED_TRACE(row.says);
        model->SetSignInProgress(
            {row.stage, moxcore::threads::TimePoint(std::chrono::minutes(14 * 60 + 5))});
        RunEvents();
        std::string texts;
        testsupport::ForEach<UI_StaticText>(
            *view, [&](UI_StaticText& text) { texts += UTF16to8(text.GetText()) + "\n"; });
        EXPECT_THAT(texts, testing::HasSubstr(row.says));
        std::vector<std::string> buttons;
        testsupport::ForEach<UI_TextButton>(*view, [&](UI_TextButton& button) {
            if (button.UI_IsViewVisible() && button.UI_IsEnabled())
                buttons.push_back(UTF16to8(button.GetText()));
        });
        EXPECT_EQ(buttons, row.buttons);
    }
    unsetenv("LC_TIME");
}

TEST_F(ShareViewsTest, TheCallToActionStandsOutAsFarAsItsGivenColoursDo) {
    // White on the blue of the product's: the one text that is below 4.5.
    boost::intrusive_ptr<sharedui::CallToActionButton> const button(
        new sharedui::CallToActionButton);
    namespace Key = moxui::skins::ThemeColor;
    for (int const ground : {Key::kButtonGround, Key::kButtonHovered})
        EXPECT_NEAR(
            testsupport::Contrast(button->GetColor(Key::kButtonText), button->GetColor(ground)),
            3.95, 0.01);
}

TEST_F(ShareViewsTest, AWorkflowLabelKeepsLongTextsInTheirPlaces) {
    boost::intrusive_ptr<WorkflowLabel> const label(new WorkflowLabel(nullptr));
    window.Add(label, {0, 0, 310, 20});
    auto const title = FindText<UI_StaticText>(*label, "Share for review:");
    auto const icon = Find<SizedStaticImage>(*label);
    EXPECT_EQ(icon->UI_GetLocalRectF(true).x, title->UI_GetLocalRectF(true).width + 8);
    title->SetText(UTF16String(200, 'W'));
    label->SetLabelText(UTF16String(200, 'W'));
    label->UI_SetLocalRectF({0, 0, 310, 20});
    EXPECT_EQ(title->UI_GetLocalRectF(true).width, 155);
    EXPECT_EQ(icon->UI_GetLocalRectF(true), (moxcore::geom::RectT<float>{163, 1, 14, 14}));
}

TEST_F(ShareViewsTest, TheProgressViewTellsTheStatusOfItsMoment) {
    for (auto const& [id, status] :
         std::vector<std::pair<ID, char const*>>{{ID::WaitingInQueue, "Waiting in queue..."},
                                                 {ID::EncodingProgress, "Encoding in Progress..."},
                                                 {ID::UploadInProgress, "Upload in Progress..."}}) {
        Show(id);
        EXPECT_TRUE(Shows(status)) << status;
        auto* const bar = QAccessible::queryAccessibleInterface(
            &WidgetOf(*Find<moxui::controls::UI_ProgressBar>(*view)));
        EXPECT_EQ(bar->text(QAccessible::Name), status);
    }
}

TEST_F(ShareViewsTest, TheProgressViewFollowsTheProgressAndTheLink) {
    constexpr char kNote[] = "Link will be available once export completes";
    Show(ID::EncodingProgress);
    EXPECT_TRUE(Shows(kNote));
    auto const bar = Find<moxui::controls::UI_ProgressBar>(*view);
    for (auto const& [progress, shown] :
         std::vector<std::pair<double, unsigned>>{{0.4567, 456}, {1.0, 1000}, {0.0, 0}}) {
        model->SetEncodingProgress(progress);
        RunEvents();
        EXPECT_EQ(bar->GetValue(), shown);
        EXPECT_EQ(bar->GetMaximum(), 1000U);
    }
    model->SetReviewLinkURL(AsciiToUTF16("http://127.0.0.1/r/abc"));
    RunEvents();
    EXPECT_TRUE(Shows("http://127.0.0.1/r/abc"));
    EXPECT_FALSE(Shows(kNote));
    model->SetReviewLinkURL({});
    RunEvents();
    EXPECT_TRUE(Shows(kNote));
}

TEST_F(ShareViewsTest, TheProgressViewSaysSinceWhenAnUploadWaits) {
    setenv("TZ", "UTC", 1);
    setenv("LC_TIME", "de_DE", 1);
    constexpr moxcore::threads::TimePoint kSince(std::chrono::minutes(14 * 60 + 5));
    constexpr char kNote[] = "The upload goes on by itself.";
    model->SetUploadWaitingSince(kSince);
    for (bool const waits : {true, false}) {
        model->SetUploadWaitingSince(waits ? std::optional(kSince) : std::nullopt);
        Show(ID::UploadInProgress);
        RunEvents();
        EXPECT_EQ(Shows("Quillo has not been available since 14:05."), waits);
        EXPECT_EQ(Shows("Upload in Progress..."), !waits);
        EXPECT_EQ(FindText<UI_StaticText>(*view, kNote)->UI_IsViewVisible(), waits);
    }
    unsetenv("LC_TIME");
}

TEST_F(ShareViewsTest, CopyLinkPutsTheLinkOnTheClipboardAndSaysSo) {
    model->SetReviewLinkURL(AsciiToUTF16("http://127.0.0.1/r/<abc>&d"));
    Show(ID::CopyLinkSection);
    auto const link = Find<moxui::controls::UI_HotTextURL>(*view);
    EXPECT_EQ(UTF16to8(link->GetURL()), "http://127.0.0.1/r/<abc>&d");

    // The link of a view is that of its moment.
    model->SetReviewLinkURL(AsciiToUTF16("http://elsewhere/"));
    RunEvents();
    QGuiApplication::clipboard()->setText("before");
    Click(*FindText<UI_TextButton>(*view, "Copy link"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "http://127.0.0.1/r/<abc>&d");
    EXPECT_THAT(Toasts(), testing::ElementsAre("Copied"));
    executor.AdvanceBy(std::chrono::seconds(60));
    RunEvents();
    EXPECT_THAT(Toasts(), testing::IsEmpty());
}

TEST_F(ShareViewsTest, TheDebugViewFollowsTheSignIn) {
    auto const user = std::make_shared<QuilloUser>();
    user->SetName(AsciiToUTF16("Ada"));
    model->SetUser(user);
    model->SetCurrentViewID(ID::DebugView);
    view = factory::CreateView(ID::DebugView, model);
    EXPECT_TRUE(Shows("--empty--"));
    window.Add(view, {0, 0, 340, 200});
    EXPECT_TRUE(Shows("Ada"));
    auto const other = std::make_shared<QuilloUser>();
    other->SetName(AsciiToUTF16("Grace"));
    model->SetUser(other);
    user->SetName(AsciiToUTF16("Lovelace"));
    RunEvents();
    EXPECT_TRUE(Shows("Grace"));

    auto const login = FindText<UI_TextButton>(*view, "Login");
    auto const logout = FindText<UI_TextButton>(*view, "Logout");
    for (bool const loggedIn : {true, false}) {
        model->SetIsLoggedIn(loggedIn);
        RunEvents();
        EXPECT_EQ(login->UI_IsEnabled(), !loggedIn);
        EXPECT_EQ(logout->UI_IsEnabled(), loggedIn);
        Click(loggedIn ? *logout : *login);
    }
    EXPECT_EQ(model->logins, 1);
    EXPECT_EQ(model->logouts, 1);
}

}  // namespace
}  // namespace quillomoxui::view
