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

    [[nodiscard]] string::UTF16String FullPath() const;

    [[nodiscard]] bool Exists() const;

    /// Removes the file; true when it is gone afterwards.
    bool Delete() const;

private:
    std::string path;  // UTF-8
};

}  // namespace moxcore::filesupport
