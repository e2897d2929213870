#include "host/state/HostFiles.h"

#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "quillohostkit/state/OwnFile.h"

namespace quillohost {

namespace commondirs = moxcore::filesupport::commondirs;

void UseDataDirectory(std::optional<std::filesystem::path> const& directory) {
    commondirs::SetApplicationName(moxcore::string::AsciiToUTF16("quillo-host"));
    if (directory) commondirs::SetUserRoot(moxcore::string::UTF8to16(directory->string()));
}

std::filesystem::path HostDataFile(std::string const& name) {
    auto const directory = moxcore::string::UTF16to8(commondirs::UserDataDir().FullPath());
    return std::filesystem::path(directory) / name;
}

std::filesystem::path OwnHostFile(std::string const& name) {
    auto const path = HostDataFile(name);
    quillohostkit::MakeOwnFile(path);
    return path;
}

}  // namespace quillohost
