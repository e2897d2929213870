#include "host/editor/Preferences.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <utility>

#include "quillohostkit/widgets/LocationDialog.h"

namespace quillohost::editor {

using quillomoxui::QuilloUser;

Preferences::Preferences(Sharing& sharing, QWidget* parent)
    : QDialog(parent),
      sharing(sharing),
      destination(new quillohostkit::ElidedLabel("Default destination", Qt::ElideMiddle)),
      message(new quillohostkit::ElidedLabel("Message", Qt::ElideRight)),
      chooseButton(new QPushButton("C&hoose...")),
      clearButton(new QPushButton("C&lear")),
      failures([this](auto const& failure) { OnFailure(failure); }) {
    setWindowTitle("Preferences");
    chooseButton->setAccessibleName("Choose the Default Destination");
    clearButton->setAccessibleName("Clear the Default Destination");
    chooseButton->setAutoDefault(false);
    clearButton->setAutoDefault(false);
    connect(chooseButton, &QPushButton::clicked, this, [this] { SignInToChoose(); });
    connect(clearButton, &QPushButton::clicked, this, [this] { SetDestination(std::nullopt); });
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QGridLayout(this);
    layout->addWidget(new QLabel("Default destination of movies that were never shared:"), 0, 0, 1,
                      3);
    layout->addWidget(destination, 1, 0);
    layout->addWidget(chooseButton, 1, 1);
    layout->addWidget(clearButton, 1, 2);
    layout->addWidget(message, 2, 0, 1, 3);
    layout->addWidget(buttons, 3, 0, 1, 3);
    layout->setColumnStretch(0, 1);
    setMinimumWidth(520);
    chooseButton->setEnabled(sharing.IsServiceReady());
    Show("");
}

/// Everything as it is now, and a line for the user.
void Preferences::Show(std::string const& line) {
    std::optional<quillohostkit::ChosenLocation> location;
    try {
        location = sharing.DefaultDestination();
        message->SetText(QString::fromStdString(line));
    } catch (std::exception const& exception) {
        message->SetText(QString::fromStdString(exception.what()));
    }
    destination->SetText(location ? QString::fromStdString(location->namePath) : "None");
    clearButton->setEnabled(location.has_value());
}

void Preferences::SetDestination(std::optional<quillohostkit::ChosenLocation> const& location) {
    try {
        sharing.SetDefaultDestination(location);
        Show("");
    } catch (std::exception const& exception) {
        Show(exception.what());
    }
}

void Preferences::SignInToChoose() {
    Show("Signing in...");
    viewModel = std::make_shared<quillomoxui::ShareForReviewViewModel>();
    userBinding = viewModel->UserNotifyingPropertyHost::BindValueChanged(
        [this, life = token.Watch()](std::shared_ptr<QuilloUser> const& user) {
            // A delivery that was queued before the binding ended still comes.
            if (life.expired() || !viewModel || viewModel->GetUser() != user) return;
            if (!user->GetID().IsNull()) Choose(user);
        });
    viewModel->Login();
}

void Preferences::Choose(std::shared_ptr<QuilloUser> const& user) {
    userBinding.reset();
    viewModel.reset();
    Show("");
    if (auto const location = quillohostkit::AskForLocation(user, *this)) SetDestination(location);
}

void Preferences::OnFailure(quillocommon::Failure const& failure) {
    using quillocommon::Step;
    if (!viewModel || (failure.step != Step::SignIn && failure.step != Step::ReadUser)) return;
    Show(sharing.Explain(failure));
}

}  // namespace quillohost::editor
