#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/session/FolderPath.h"
#include "quillohostkit/state/AssetStore.h"
#include "quillohostkit/state/SharedAsset.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohostkit {

/// Where movies are shared to: selects, for the movie that is to be shared, the folder that it was
/// shared to last, or the user's default when it never was, as soon as somebody is signed in, and
/// knows the path of each folder that was selected. Main thread.
class QUILLOHOSTKIT_API Destinations {
public:
    using Guid = moxcore::utility::Guid;

    /// `tell` is called with lines for the user.
    Destinations(std::shared_ptr<AssetStore> store,
                 std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel,
                 std::function<void(std::string const&)> tell);

    /// From now on `asset` is to be shared. A folder that is selected stays so when the asset was
    /// never shared and there is no default.
    void Restore(std::shared_ptr<SharedAsset> const& asset);

    /// The default is another, or none any more: an asset that was never shared and for which the
    /// user has chosen nothing goes there.
    void OnDefaultChanged();

    /// A share begins: what is stored with the asset is left alone from now on.
    void Settle() { attempt.Reset(); }

    /// The path of a folder that was selected; empty when it was not.
    [[nodiscard]] IDPath GetIDPath(Guid const& folder) const;

private:
    void OnUserChanged(std::shared_ptr<quillomoxui::QuilloUser> const& user);
    void RestoreSelection();
    void OnPathFound(FolderPath const& found, bool isDefault);
    void CheckThatItIsThere(FolderPath const& found);

    std::shared_ptr<AssetStore> store;
    std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel;
    std::function<void(std::string const&)> tell;
    std::shared_ptr<SharedAsset> asset;
    std::shared_ptr<quillomoxui::QuilloUser> user;
    std::map<std::string, IDPath> idPaths;    // by the folder's ID as text
    FolderPath path;                          // keeps the selection where it is in the tree
    moxcore::utility::LifetimeToken attempt;  // of what is looked for
    ChildLists lists;
    std::shared_ptr<quillomoxui::BindingHandle> userBinding;
    std::shared_ptr<quillomoxui::BindingHandle> selectionBinding;
};

}  // namespace quillohostkit
