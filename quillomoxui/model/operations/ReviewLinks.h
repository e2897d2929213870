#pragma once

#include <functional>

#include "moxcore/utility/Guid.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui::model {

// Review links. Completions are called once, on the service's own threads. Both operations answer
// false, and call nothing, when nobody is signed in. Any thread.

/// Creates a review link named `name` in a project. `completion` receives whether there is one now,
/// its ID and its URL; all zero and empty when not.
QUILLO_API bool CreateReviewLink(
    moxcore::utility::Guid const& projectID, UTF16String const& name,
    std::function<void(bool, moxcore::utility::Guid const&, UTF16String const&)> const& completion);

/// Adds an asset to a review link; `completion` receives whether it is there now.
QUILLO_API bool AddAssetToLink(moxcore::utility::Guid const& assetID,
                               moxcore::utility::Guid const& linkID,
                               std::function<void(bool)> const& completion);

}  // namespace quillomoxui::model
