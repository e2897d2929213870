#include "host/state/HostFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "host/process/Failure.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"

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
    constexpr mode_t kOwnerOnly = 0600;
    int const made =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly);
    if (made >= 0) {
        close(made);
        return path;
    }
    // One that is there is not opened: SQLite loses its locks when another descriptor is closed.
    struct stat status {};
    if (errno != EEXIST || lstat(path.c_str(), &status) != 0) {
        throw Failure(ExitCode::Other, "Cannot make \"" + path.string() +
                                           "\": " + std::generic_category().message(errno));
    }
    if (!S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
        throw Failure(ExitCode::Other,
                      "\"" + path.string() +
                          "\" is a link or another user's file, which is not used; remove it.");
    }
    if ((status.st_mode & ~S_IFMT) != kOwnerOnly) chmod(path.c_str(), kOwnerOnly);
    return path;
}

}  // namespace quillohost
