#include "quillosdk/FileSnapshot.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/TransferManager.h"

namespace quillosdk {
namespace {

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

}  // namespace

FileSnapshot::FileSnapshot(std::string path) : path(std::move(path)) {
    // Not blocking: to open a pipe would wait for its writer.
    descriptor = open(this->path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) FailUnreadable("cannot be opened: " + ErrorText(errno));
    std::string problem;
    if (fstat(descriptor, &opened) != 0)
        problem = "cannot be examined: " + ErrorText(errno);
    else if (!S_ISREG(opened.st_mode))
        problem = "is no regular file";
    else if (opened.st_size == 0)
        problem = "is empty";
    if (!problem.empty()) {
        close(descriptor);
        FailUnreadable(problem);
    }
    posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
}

FileSnapshot::~FileSnapshot() {
    close(descriptor);
}

void FileSnapshot::ReadAt(std::uint64_t offset, std::span<char> bytes) const {
    while (!bytes.empty()) {
        ssize_t const got =
            pread(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) FailUnreadable("cannot be read: " + ErrorText(errno));
        if (got == 0) FailChanged();
        offset += static_cast<std::uint64_t>(got);
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
}

void FileSnapshot::CheckUnchanged() const {
    struct stat now {};
    if (fstat(descriptor, &now) != 0) FailUnreadable("cannot be examined: " + ErrorText(errno));
    if (!IsAsOpened(now)) FailChanged();
}

void FileSnapshot::CheckStillThere() const {
    CheckUnchanged();
    struct stat now {};
    if (stat(path.c_str(), &now) != 0 || !IsAsOpened(now)) FailChanged();
}

bool FileSnapshot::IsAsOpened(struct stat const& now) const {
    return now.st_dev == opened.st_dev && now.st_ino == opened.st_ino &&
           now.st_size == opened.st_size && now.st_mtim.tv_sec == opened.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == opened.st_mtim.tv_nsec;
}

void FileSnapshot::FailUnreadable(std::string const& problem) const {
    throw moxcore::config::ResultException(kFileUnreadable,
                                           "the file " + Sanitise(path) + " " + problem);
}

void FileSnapshot::FailChanged() const {
    throw moxcore::config::ResultException(
        kFileChanged,
        "the file " + Sanitise(path) +
            " has changed during the upload; wait until it is complete and try again");
}

}  // namespace quillosdk
