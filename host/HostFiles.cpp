#include "host/HostFiles.h"

#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"

namespace quillohost {

namespace commondirs = moxcore::filesupport::commondirs;

void UseDataDirectory(Options const& options) {
    commondirs::SetApplicationName(moxcore::string::AsciiToUTF16("quillo-host"));
    if (options.data) commondirs::SetUserRoot(moxcore::string::UTF8to16(options.data->string()));
}

std::filesystem::path HostDataFile(std::string const& name) {
    auto const directory = moxcore::string::UTF16to8(commondirs::UserDataDir().FullPath());
    return std::filesystem::path(directory) / name;
}

}  // namespace quillohost
