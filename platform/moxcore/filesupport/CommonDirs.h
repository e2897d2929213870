#pragma once

#include "moxcore/Export.h"
#include "moxcore/filesupport/File.h"

namespace moxcore::filesupport::commondirs {

// The user's own directories, made on first use and closed to other users (mode 0700). By the XDG
// rules: $XDG_CACHE_HOME/<application> and so on, "moxcore" being the application until the host
// names itself. Any thread; a directory that cannot be made, or is another user's, is a
// ResultException that names it.

[[nodiscard]] MOXCORE_API File UserCacheDir();
[[nodiscard]] MOXCORE_API File UserConfigDir();
[[nodiscard]] MOXCORE_API File UserDataDir();
[[nodiscard]] MOXCORE_API File UserStateDir();

/// The application's name in these directories. Call before any of them is used.
MOXCORE_API void SetApplicationName(string::UTF16String const& name);

/// Puts all of them below one directory, as "cache", "config", "data" and "state", instead of where
/// XDG has them. The directory has to be the user's own and closed to the writing of others; its
/// mode stays what it is, and a link in it is refused. Call before any of them is used.
MOXCORE_API void SetUserRoot(string::UTF16String const& directory);

/// Whether they are there: then nothing of the user's is to be kept elsewhere.
[[nodiscard]] MOXCORE_API bool HasUserRoot();

}  // namespace moxcore::filesupport::commondirs
