#pragma once

#include <sys/stat.h>

#include <string>

#include "moxcore/utility/Descriptor.h"

namespace quilloservice {

// Files and directories that belong to the user who runs the service.

inline constexpr mode_t kOwnDirectoryMode = 0700;
inline constexpr mode_t kOwnFileMode = 0600;

/// Rights of other users that a directory must not grant.
enum class Forbidden : mode_t { Writing = 0022, AnyAccess = 0077 };

/// A directory, as messages and system calls name it.
struct DirectoryName {
    int parent;            ///< descriptor of the parent directory, or AT_FDCWD
    std::string name;      ///< relative to `parent`
    std::string path;      ///< in messages
    std::string advice{};  ///< in messages: what else the user can do; may be empty
};

/// Opens a directory that belongs to the user and does not grant `forbidden`. `flags` are further
/// flags for open(2). Throws std::runtime_error, with the remedy in the message.
moxcore::utility::Descriptor OpenOwnDirectory(DirectoryName const& directory, Forbidden forbidden,
                                              int flags);

/// Like OpenOwnDirectory, but creates the directory if it is missing and follows no link.
moxcore::utility::Descriptor MakeOwnDirectory(DirectoryName const& directory, Forbidden forbidden);

/// Returns the status of an open file, which must belong to the user. `path` and `advice` are for
/// the message of the std::runtime_error.
struct stat RequireOwn(int descriptor, std::string const& path, std::string const& advice);

}  // namespace quilloservice
