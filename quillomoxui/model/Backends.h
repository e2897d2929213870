#pragma once

#include <memory>

#include "moxcore/classref/InterfaceRef.h"
#include "quillomoxui/model/Backend.h"

namespace quillo {
class QuilloUser;
}

namespace quillomoxui::model {

/// The backend that the switch "QuilloNative.UseQuilloCppSdk" of the debug database names at the
/// moment: the service's SDK (true, the default) or the older client library. Valid until the
/// process ends; a backend acquires nothing before its first use. Any thread.
[[nodiscard]] Backend const& ChosenBackend();

/// A new root of the tree for a user of the older client library, whatever backend is chosen.
/// Requests nothing by itself.
[[nodiscard]] std::shared_ptr<QuilloUser> GetUserFromClient(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user);

}  // namespace quillomoxui::model
