#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillohostkit/Export.h"
#include "quillohostkit/state/IDPath.h"
#include "quillohostkit/state/StringStore.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohostkit {

/// An asset that is shared under a name, and what is kept of its shares. Main thread.
class QUILLOHOSTKIT_API SharedAsset {
public:
    using Guid = moxcore::utility::Guid;

    /// `id` names the asset in `strings`.
    SharedAsset(std::shared_ptr<StringStore> strings, AssetID const& id, std::string name);

    [[nodiscard]] std::string const& GetName() const { return name; }
    [[nodiscard]] AssetID const& GetID() const { return id; }
    [[nodiscard]] std::shared_ptr<StringStore> const& Strings() const { return strings; }

    /// The string stored with it under one of the library's keys (quillomoxui::assetdata).
    [[nodiscard]] std::string Stored(char const* key) const;

    /// The folder that it was last shared to.
    [[nodiscard]] IDPath GetIDPath() const;
    /// Marks the end of a share.
    void SetIDPath(IDPath const& path);

    /// How many versions have been shared under its link.
    [[nodiscard]] std::int64_t Version() const;

    /// Has the next share begin anew, under a new link: the service may have lost what was shared,
    /// one for development is often begun anew at the same address.
    void ForgetShares();

    /// The link of the share that has begun, which callers hand to shells and browsers as it is. A
    /// Failure (Link) when it is no plain web address; the next share has another one made.
    [[nodiscard]] std::string CheckLink(std::string const& link) const;

    /// The keys to lock while it is shared, `outputFileName` being the library's name for the
    /// exported file: one share at a time goes on with an asset, and one under a name.
    [[nodiscard]] std::vector<std::string> LockKeys(
        quillomoxui::UTF16String const& outputFileName) const;

private:
    std::shared_ptr<StringStore> strings;
    AssetID id;
    std::string name;
};

/// Has the library name the asset that `active` answers, asked on the main thread, and keep what it
/// stores with assets in their strings, where each upload counts as a version. `onFailure` is
/// called, on any thread, with what the strings throw: the library's own threads must not.
QUILLOHOSTKIT_API void ConnectStore(
    quillomoxui::ShareForReviewViewModel& viewModel,
    std::function<std::shared_ptr<SharedAsset const>()> const& active,
    std::function<void(std::exception_ptr)> const& onFailure);

}  // namespace quillohostkit
