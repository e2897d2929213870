#include "quillomoxui/viewmodel/SelectionKeeper.h"

namespace quillomoxui {

SelectionKeeper::SelectionKeeper(std::shared_ptr<QuilloUser> const& user) : user(user) {}

SelectionKeeper::~SelectionKeeper() = default;

void SelectionKeeper::Start() {
    std::weak_ptr<SelectionKeeper> const weak = Share(this);
    auto const onReplaced = [weak] {
        if (auto const self = weak.lock()) self->OnReplaced();
    };
    binding = static_cast<SelectionNotifyingPropertyHost&>(*user).BindValueChanged(
        [weak, onReplaced](std::shared_ptr<QuilloFolder> const& selection) {
            auto const self = weak.lock();
            if (!self) return;
            if (!self->path && selection)
                self->path = std::make_shared<NodePath>(self->user, onReplaced);
            if (self->path) self->path->Follow(selection);
        });
}

void SelectionKeeper::OnReplaced() {
    auto const followed = path->GetFollowed();
    // Not there yet, or the user has chosen another folder meanwhile.
    if (path->GetState() == NodePath::State::Pending || user->GetSelection() != followed) return;
    if (path->GetState() == NodePath::State::Broken) return user->LoseSelection();
    auto const folder = path->GetFolder();
    bool const isProposed = user->GetProposedSelection() == followed;
    user->SetSelection(folder);
    if (isProposed) user->SetProposedSelection(folder);
}

}  // namespace quillomoxui
