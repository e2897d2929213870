#pragma once

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::utility::Keychain {

/// The ID of the user who is signed in to the platform: the login name of the process's owner, or
/// the decimal user number where it has none. Any thread.
[[nodiscard]] MOXCORE_API string::UTF16String GetNexoUserID();

}  // namespace moxcore::utility::Keychain
