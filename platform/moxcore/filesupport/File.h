#pragma once

#include <string>

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::filesupport {

/// A path on the local file system. A plain value: naming a file neither opens nor makes it. Any
/// thread.
class MOXCORE_API File {
public:
    /// The file at `path`. `storageType` 0, the only one, is the local file system.
    File(string::UTF16String const& path, int storageType);

    /// The entry `name` of `directory`.
    File(File const& directory, string::UTF16String const& name);

    /// The path as it was given; a directory and an entry are joined by a slash.
    [[nodiscard]] string::UTF16String FullPath() const;

    /// Whether there is a file or directory at the path now. False when that cannot be found out.
    [[nodiscard]] bool Exists() const;

    /// Removes the file; true when it is gone afterwards.
    bool Delete() const;

private:
    std::string path;  // UTF-8
};

}  // namespace moxcore::filesupport
