#include "quillohostkit/session/Destinations.h"

#include <algorithm>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/OnMainThread.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"

namespace quillohostkit {

using moxcore::config::Text;
using quillomoxui::FetchChildrenState;
using quillomoxui::QuilloUser;

Destinations::Destinations(std::shared_ptr<AssetStore> newStore,
                           std::shared_ptr<quillomoxui::ShareForReviewViewModel> newViewModel,
                           std::function<void(std::string const&)> newTell)
    : store(std::move(newStore)), viewModel(std::move(newViewModel)), tell(std::move(newTell)) {
    userBinding = viewModel->UserNotifyingPropertyHost::BindValueChanged(
        [this](auto const& changed) { OnUserChanged(changed); });
}

void Destinations::Restore(std::shared_ptr<SharedAsset> const& newAsset) {
    asset = newAsset;
    RestoreSelection();
}

IDPath Destinations::GetIDPath(Guid const& folder) const {
    auto const found = idPaths.find(folder.AsStdString());
    return found == idPaths.end() ? IDPath() : found->second;
}

void Destinations::OnUserChanged(std::shared_ptr<QuilloUser> const& changed) {
    user = changed;
    selectionBinding = user->SelectionPathNotifyingPropertyHost::BindValueChanged([this](auto&) {
        if (auto const folder = user->GetSelection())
            idPaths[folder->GetID().AsStdString()] = IDPathOf(folder);
    });
    RestoreSelection();
}

void Destinations::RestoreSelection() {
    attempt.Reset();
    if (!asset || !user || user->GetID().IsNull()) return;
    auto wanted = asset->GetIDPath();
    bool const isDefault = wanted.empty();
    if (isDefault) {
        auto const location = store->ReadDefaultDestination();
        if (!location) return;
        wanted = location->idPath;
    }
    auto const before = user->GetSelection();
    OnMainThread(FindByIDPath(lists, user, wanted), attempt, [=, this](auto const& found) {
        if (user->GetSelection() != before) return;  // the user has been quicker
        try {
            OnPathFound(found.Get(), isDefault);
        } catch (std::exception const& exception) {
            tell(exception.what());
        }
    });
}

void Destinations::OnDefaultChanged() {
    if (!asset || !user || !asset->GetIDPath().empty()) return;
    if (auto const selection = user->GetSelection()) {
        if (!path.folder || path.folder->GetID() != selection->GetID()) return;
        user->SetSelection(nullptr);
    }
    RestoreSelection();
}

void Destinations::OnPathFound(FolderPath const& found, bool isDefault) {
    if (!found.folder)
        return tell(Text(isDefault
                             ? "$$$/Vistrel/quillohostkit/Destination/DefaultGone=The default "
                               "destination is gone; choose another one in the preferences."
                             : "$$$/Vistrel/quillohostkit/Destination/LastGone=The folder that "
                               "this asset was shared to last is gone."));
    bool const isNews = found.folder->GetFetchChildrenState() == FetchChildrenState::NotFetched;
    path = found;
    user->SetSelection(path.folder);
    // A list that was read before may be older than what has been shared since.
    if (isNews && !isDefault) CheckThatItIsThere(path);
}

void Destinations::CheckThatItIsThere(FolderPath const& shared) {
    OnMainThread(lists.ChildrenOf(shared.folder), attempt, [this](auto const& list) {
        if (list.GetException()) return;           // unknown; the failure is reported elsewhere
        if (viewModel->IsShareUnderWay()) return;  // that stores something else with it
        auto const stack = asset->Stored(quillomoxui::assetdata::kVersionStackGuid);
        auto const children = list.Get();
        if (std::any_of(children.begin(), children.end(),
                        [&](auto const& child) { return child->GetID() == Guid(stack); }))
            return;
        tell(
            Text("$$$/Vistrel/quillohostkit/Destination/ShareLost=The service no longer has what "
                 "was shared of this asset; it will be shared anew."));
        asset->ForgetShares();
    });
}

}  // namespace quillohostkit
