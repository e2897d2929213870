#include "service/base/OwnFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace quilloservice {

using moxcore::utility::Descriptor;

namespace {

[[noreturn]] void Fail(std::string const& doing) {
    throw std::runtime_error(doing + ": " + std::generic_category().message(errno));
}

void RequireClosed(mode_t mode, DirectoryName const& directory, Forbidden forbidden) {
    if ((mode & static_cast<mode_t>(forbidden)) == 0) return;
    bool writing = forbidden == Forbidden::Writing;
    throw std::runtime_error("other users can " + std::string(writing ? "write to " : "access ") +
                             directory.path + "; run chmod " + (writing ? "go-w" : "go=") + " '" +
                             directory.path + "'" +
                             (directory.advice.empty() ? "" : ", or " + directory.advice));
}

}  // namespace

Descriptor OpenOwnDirectory(DirectoryName const& directory, Forbidden forbidden, int flags) {
    Descriptor opened(::openat(directory.parent, directory.name.c_str(),
                               O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
    if (!opened && errno == ENOTDIR) {
        throw std::runtime_error(directory.path +
                                 " is no directory, or a link, which is not followed");
    }
    if (!opened) Fail("cannot open " + directory.path);
    struct stat status = RequireOwn(opened.GetNumber(), directory.path, directory.advice);
    RequireClosed(status.st_mode, directory, forbidden);
    return opened;
}

Descriptor MakeOwnDirectory(DirectoryName const& directory, Forbidden forbidden) {
    if (::mkdirat(directory.parent, directory.name.c_str(), kOwnDirectoryMode) != 0 &&
        errno != EEXIST) {
        Fail("cannot make " + directory.path);
    }
    return OpenOwnDirectory(directory, forbidden, O_NOFOLLOW);
}

struct stat RequireOwn(int descriptor, std::string const& path, std::string const& advice) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) Fail("cannot look at " + path);
    if (status.st_uid != ::geteuid()) {
        throw std::runtime_error(path + " belongs to another user (" +
                                 std::to_string(status.st_uid) + ")" +
                                 (advice.empty() ? "" : "; " + advice));
    }
    return status;
}

}  // namespace quilloservice
