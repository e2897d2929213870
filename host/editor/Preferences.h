#pragma once

#include <QDialog>
#include <QPushButton>
#include <memory>

#include "host/editor/Sharing.h"
#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/session/FailureInbox.h"
#include "quillohostkit/widgets/ElidedLabel.h"

namespace quillohost::editor {

/// The user's settings: the default destination of movies that were never shared. The choice takes
/// effect at once. Main thread.
class Preferences : public QDialog {
public:
    Preferences(Sharing& sharing, QWidget* parent);

private:
    void Show(std::string const& message);
    void SetDestination(std::optional<quillohostkit::ChosenLocation> const& location);
    void SignInToChoose();
    void Choose(std::shared_ptr<quillomoxui::QuilloUser> const& user);
    void OnFailure(quillocommon::Failure const& failure);

    Sharing& sharing;
    quillohostkit::ElidedLabel* destination;
    quillohostkit::ElidedLabel* message;
    QPushButton* chooseButton;
    QPushButton* clearButton;
    /// Signs in for the location dialog, which has a tree of its own; while that is under way.
    std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel;
    std::shared_ptr<quillomoxui::BindingHandle> userBinding;
    quillohostkit::FailureInbox failures;
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillohost::editor
