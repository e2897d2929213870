#include "moxcore/filesupport/File.h"

#include <unistd.h>

#include <cerrno>

#include "moxcore/string/Conversions.h"

namespace moxcore::filesupport {

File::File(string::UTF16String const& path, int) : path(string::UTF16to8(path)) {}

File::File(File const& directory, string::UTF16String const& name) : path(directory.path) {
    if (!path.ends_with('/')) path += '/';
    path += string::UTF16to8(name);
}

string::UTF16String File::FullPath() const {
    return string::UTF8to16(path);
}

bool File::Exists() const {
    return access(path.c_str(), F_OK) == 0;
}

bool File::Delete() const {
    return unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
}

}  // namespace moxcore::filesupport
