#pragma once

#include <functional>

#include "moxcore/utility/Guid.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui::model {

/// Uploads the file at `path` into a folder as the newest version of a version stack (all zero: as
/// a file of its own). `progress` receives the fraction transferred; `completion`, once, whether it
/// succeeded and the new asset's ID, all zero when not. Both are called on the service's own
/// threads. An upload that is cancelled because the process ends completes nothing. False when
/// nobody is signed in; nothing is called then. Any thread.
QUILLO_API bool UploadToFolder(
    UTF16String const& path, moxcore::utility::Guid const& folderID,
    moxcore::utility::Guid const& versionStackID, std::function<void(double)> const& progress,
    std::function<void(bool, moxcore::utility::Guid const&)> const& completion);

}  // namespace quillomoxui::model
