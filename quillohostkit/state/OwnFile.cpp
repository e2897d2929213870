#include "quillohostkit/state/OwnFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/FileFailures.h"

namespace quillohostkit {

using moxcore::config::Text;

void MakeOwnFile(std::filesystem::path const& path) {
    constexpr mode_t kOwnerOnly = 0600;
    int const made =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly);
    if (made >= 0) {
        close(made);
        return;
    }
    // One that is there is not opened: SQLite loses its locks when another descriptor is closed.
    struct stat status {};
    if (errno != EEXIST || lstat(path.c_str(), &status) != 0) {
        throw Failure(FailureKind::Other,
                      Text(kCannotMake, {{"file", path.string()},
                                         {"reason", std::generic_category().message(errno)}}));
    }
    if (!S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
        throw Failure(FailureKind::Other,
                      Text("$$$/Vistrel/quillohostkit/State/NotOwn=\"{file}\" is a link or another "
                           "user's file, which is not used; remove it.",
                           {{"file", path.string()}}));
    }
    if ((status.st_mode & ~S_IFMT) != kOwnerOnly) chmod(path.c_str(), kOwnerOnly);
}

}  // namespace quillohostkit
