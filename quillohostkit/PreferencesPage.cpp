#include "quillohostkit/PreferencesPage.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <optional>
#include <string>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/session/ExplainFailure.h"
#include "quillohostkit/session/FailureInbox.h"
#include "quillohostkit/sharing/Sharing.h"
#include "quillohostkit/widgets/ElidedLabel.h"
#include "quillohostkit/widgets/LocationDialog.h"
#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {

using moxcore::config::Text;
using quillomoxui::QuilloUser;
using quillomoxui::ShareForReviewViewModel;

class PreferencesPage::Impl {
public:
    Impl(PreferencesPage& newPage, ShareController& controller)
        : page(newPage),
          state(*controller.GetState()),
          account(
              new ElidedLabel(QtText("$$$/Vistrel/quillohostkit/Preferences/AccountName=Account"),
                              Qt::ElideMiddle)),
          destination(new ElidedLabel(
              QtText("$$$/Vistrel/quillohostkit/Preferences/DestinationName=Default destination"),
              Qt::ElideMiddle)),
          message(
              new ElidedLabel(QtText("$$$/Vistrel/quillohostkit/Message=Message"), Qt::ElideRight)),
          accountButton(new QPushButton),
          chooseButton(
              new QPushButton(QtText("$$$/Vistrel/quillohostkit/Preferences/Choose=C&hoose..."))),
          clearButton(
              new QPushButton(QtText("$$$/Vistrel/quillohostkit/Preferences/Clear=C&lear"))),
          failures([this](auto const& failure) { OnFailure(failure); }) {
        chooseButton->setAccessibleName(QtText(
            "$$$/Vistrel/quillohostkit/Preferences/ChooseName=Choose the Default Destination"));
        clearButton->setAccessibleName(QtText(
            "$$$/Vistrel/quillohostkit/Preferences/ClearName=Clear the Default Destination"));
        message->SetStatus();
        for (auto* const button : {accountButton, chooseButton, clearButton})
            button->setAutoDefault(false);
        LayOut();
        connect(accountButton, &QPushButton::clicked, &page, [this] { SignInOrOut(); });
        connect(chooseButton, &QPushButton::clicked, &page, [this] { SignInToChoose(); });
        connect(clearButton, &QPushButton::clicked, &page,
                [this] { SetDestination(std::nullopt); });
        connect(&state, &ShareState::changed, &page, [this] { ShowAccount(); });
        ShowAccount();
        Show("");
    }

private:
    void LayOut() {
        auto* const layout = new QGridLayout(&page);
        layout->addWidget(
            new QLabel(QtText("$$$/Vistrel/quillohostkit/Preferences/Account=Account:")), 0, 0, 1,
            3);
        layout->addWidget(account, 1, 0);
        layout->addWidget(accountButton, 1, 1, 1, 2);
        layout->addWidget(
            new QLabel(QtText("$$$/Vistrel/quillohostkit/Preferences/Destination=Default "
                              "destination of what was never shared:")),
            2, 0, 1, 3);
        layout->addWidget(destination, 3, 0);
        layout->addWidget(chooseButton, 3, 1);
        layout->addWidget(clearButton, 3, 2);
        layout->addWidget(message, 4, 0, 1, 3);
        layout->setColumnStretch(0, 1);
        layout->setRowStretch(5, 1);
    }

    void ShowAccount() {
        bool const isSignedIn = !state.signedInAs().isEmpty();
        account->SetText(
            isSignedIn
                ? state.signedInAs()
                : QtText("$$$/Vistrel/quillohostkit/Preferences/Nobody=Nobody is signed in"));
        accountButton->setText(
            isSignedIn ? QtText("$$$/Vistrel/quillohostkit/Preferences/SignOut=Sign &Out")
                       : QtText("$$$/Vistrel/quillohostkit/Preferences/SignIn=Sign &In"));
    }

    /// The destination as it is now, and a line for the user.
    void Show(std::string const& line) {
        std::optional<ChosenLocation> location;
        try {
            location = Sharing::Get()->DefaultDestination();
            message->SetText(QString::fromStdString(line));
        } catch (std::exception const& exception) {
            message->SetText(QString::fromStdString(exception.what()));
        }
        destination->SetText(
            location ? QString::fromStdString(location->namePath)
                     : QtText("$$$/Vistrel/quillohostkit/Preferences/NoDestination=None"));
        clearButton->setEnabled(location.has_value());
    }

    void SetDestination(std::optional<ChosenLocation> const& location) {
        try {
            Sharing::Get()->SetDefaultDestination(location);
            Show("");
        } catch (std::exception const& exception) {
            Show(exception.what());
        }
    }

    void SignInOrOut() {
        Show("");
        if (state.signedInAs().isEmpty())
            Sharing::Get()->SignIn();
        else
            Sharing::Get()->SignOut();
    }

    void SignInToChoose() {
        if (!Sharing::Get()->IsReady()) return Show(state.message().toStdString());
        Show(Text("$$$/Vistrel/quillohostkit/Preferences/SigningIn=Signing in..."));
        chooser = std::make_shared<ShareForReviewViewModel>();
        userBinding = chooser->UserNotifyingPropertyHost::BindValueChanged(
            [this, life = token.Watch()](std::shared_ptr<QuilloUser> const& user) {
                // A delivery that was queued before the binding ended still comes.
                if (life.expired() || !chooser || chooser->GetUser() != user) return;
                if (!user->GetID().IsNull()) Choose(user);
            });
        chooser->Login();
    }

    void Choose(std::shared_ptr<QuilloUser> const& user) {
        userBinding.reset();
        chooser.reset();
        Show("");
        auto const life = token.Watch();
        auto const location = AskForLocation(user, page);
        if (life.expired()) return;
        if (location) SetDestination(location);
        Sharing::Get()->Resume();
    }

    void OnFailure(quillocommon::Failure const& failure) {
        using quillocommon::Step;
        if (failure.step == Step::SignIn || failure.step == Step::ReadUser)
            Show(ExplainFailure(failure));
    }

    PreferencesPage& page;
    ShareState& state;
    ElidedLabel* account;
    ElidedLabel* destination;
    ElidedLabel* message;
    QPushButton* accountButton;
    QPushButton* chooseButton;
    QPushButton* clearButton;
    /// Signs in for the location dialog, which has a tree of its own; while that is under way.
    std::shared_ptr<ShareForReviewViewModel> chooser;
    std::shared_ptr<quillomoxui::BindingHandle> userBinding;
    FailureInbox failures;
    moxcore::utility::LifetimeToken token;
};

PreferencesPage::PreferencesPage(ShareController* controller, QWidget* parent)
    : QWidget(parent), impl(std::make_unique<Impl>(*this, *controller)) {}

PreferencesPage::~PreferencesPage() = default;

}  // namespace quillohostkit
