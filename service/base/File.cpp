#include "service/base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "service/base/ApiError.h"

namespace quilloservice {

namespace {

constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW;

[[noreturn]] void Fail(std::string const& doing) {
    if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) throw ApiError::StorageFull();
    if (errno == EMFILE || errno == ENFILE) {
        throw ApiError(503, "unavailable", "The service has too many files open.", 5);
    }
    throw std::system_error(errno, std::generic_category(), doing);
}

}  // namespace

File::File(std::string const& path, Mode mode)
    : descriptor(
          ::open(path.c_str(), (mode == Mode::Read ? O_RDONLY : O_RDWR | O_CREAT) | kFlags, 0600)) {
    if (descriptor < 0) Fail("open " + path);
}

File::~File() {
    if (descriptor >= 0) ::close(descriptor);
}

File::File(File&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}

std::optional<File> File::OpenExisting(std::string const& path) {
    int descriptor = ::open(path.c_str(), O_RDONLY | kFlags);
    if (descriptor >= 0) return File(descriptor);
    if (errno == ENOENT) return std::nullopt;
    Fail("open " + path);
}

std::int64_t File::Size() const {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) Fail("stat");
    return status.st_size;
}

std::size_t File::ReadAt(std::int64_t offset, char* buffer, std::size_t size) const {
    for (;;) {
        ssize_t count = ::pread(descriptor, buffer, size, offset);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) Fail("read");
    }
}

void File::WriteAt(std::int64_t offset, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = ::pwrite(descriptor, bytes.data(), bytes.size(), offset);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail("write");
        offset += count;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void File::Truncate(std::int64_t size) {
    if (::ftruncate(descriptor, size) != 0) Fail("truncate");
}

void File::CopyFrom(File const& source, std::int64_t from, std::int64_t size, std::int64_t to) {
    while (size > 0) {
        loff_t in = from;
        loff_t out = to;
        ssize_t count = ::copy_file_range(source.descriptor, &in, descriptor, &out,
                                          static_cast<std::size_t>(size), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) errno = EIO;
        if (count <= 0) Fail("copy");
        from += count;
        to += count;
        size -= count;
    }
}

std::int64_t File::FirstHole(std::int64_t from, std::int64_t to) const {
    if (from >= to) return to;
    off_t hole = ::lseek(descriptor, from, SEEK_HOLE);
    if (hole < 0 && errno == ENXIO) return from;  // the file ends before
    if (hole < 0) Fail("seek");
    return std::min<std::int64_t>(hole, to);
}

void File::Sync() {
    if (::fsync(descriptor) != 0) Fail("sync");
}

void SyncDirectory(std::string const& path) {
    int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | kFlags);
    if (descriptor < 0) Fail("open " + path);
    int result = ::fsync(descriptor);
    ::close(descriptor);
    if (result != 0) Fail("sync " + path);
}

}  // namespace quilloservice
