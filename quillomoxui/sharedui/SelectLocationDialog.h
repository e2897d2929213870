#pragma once

#include <functional>
#include <memory>

#include "moxcore/classref/InterfaceRef.h"
#include "moxcore/utility/Guid.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillo {
class QuilloUser;
}
namespace quillomoxui {
class QuilloUser;
}

namespace quillomoxui::sharedui {

/// Receives the folder chosen and its display path; the null Guid and nothing when none was.
using SelectLocationCallback =
    std::function<void(moxcore::utility::Guid const& folderID, UTF16String const& path)>;

/// Has the user choose one of `user`'s locations, in a modal dialog over the window that the host
/// names for dialogs, and returns when that has closed. `callback` has run by then, exactly once: a
/// dialog that ended without a choice, however it did, or that had no window to be shown over,
/// counts as cancelled. Nothing of the dialog is left. Main thread; may be called again from what
/// runs while the dialog is shown, and then returns first. Throws what `callback` has thrown, once
/// the dialog has closed, and a ContractViolation (moxcore/config/Error.h) for a null `user`, for
/// which it shows nothing and calls nobody.
QUILLO_API void ShowSelectLocationDialogCentered(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user,
    SelectLocationCallback const& callback);

/// The same for a user of the location tree, whichever backend fills it. Its tree is fetched anew,
/// and what is chosen is its selection when `callback` runs.
QUILLO_API void ShowSelectLocationDialogCentered(std::shared_ptr<QuilloUser> const& user,
                                                 SelectLocationCallback const& callback);

}  // namespace quillomoxui::sharedui
