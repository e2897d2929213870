#pragma once

#include <QWidget>
#include <memory>
#include <optional>

#include "quillohostkit/Export.h"
#include "quillohostkit/state/ChosenLocation.h"
#include "quillomoxui/model/QuilloUser.h"

namespace quillohostkit {

/// Has the user choose one of `user`'s folders in the library's dialog, which lies over `parent`,
/// or in the middle of the screen when that is hidden. Nothing when the user does not choose. The
/// tree of `user` is fetched anew, and the choice becomes its selection: it must not be the user
/// whom a popup shows. Main thread; returns when the dialog has closed.
[[nodiscard]] QUILLOHOSTKIT_API std::optional<ChosenLocation> AskForLocation(
    std::shared_ptr<quillomoxui::QuilloUser> const& user, QWidget& parent);

}  // namespace quillohostkit
