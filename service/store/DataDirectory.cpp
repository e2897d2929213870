#include "service/store/DataDirectory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <limits>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "service/base/File.h"
#include "service/base/OwnFiles.h"
#include "service/base/Text.h"

namespace quilloservice {

using moxcore::utility::Descriptor;

namespace {

constexpr char const* kAdvice = "name another directory with --data";
constexpr auto kAnyAccess = static_cast<mode_t>(Forbidden::AnyAccess);

[[noreturn]] void Fail(std::string const& doing) {
    throw std::runtime_error(doing + ": " + std::generic_category().message(errno));
}

/// Creates the directory and its missing parents.
void MakeDirectory(std::filesystem::path const& path) {
    if (::mkdir(path.c_str(), kOwnDirectoryMode) == 0 || errno == EEXIST) return;
    if (errno == ENOENT && path.has_relative_path()) {
        MakeDirectory(path.parent_path());
        if (::mkdir(path.c_str(), kOwnDirectoryMode) == 0 || errno == EEXIST) return;
    }
    Fail("cannot make " + path.string());
}

}  // namespace

DataDirectory::DataDirectory(std::string const& given) {
    MakeDirectory(given);
    // Resolved once, so that no path below it contains a link later.
    path = std::filesystem::canonical(given);
    directory = OpenOwnDirectory({AT_FDCWD, path, path, kAdvice}, Forbidden::Writing, O_NOFOLLOW);
    lock = OpenFile("lock", O_CREAT);
    if (::flock(lock.GetNumber(), LOCK_EX | LOCK_NB) != 0) {
        throw std::runtime_error("another quillo-service is running on " + path +
                                 "; stop it, or give this one a --data directory of its own");
    }
    for (char const* folder : {"uploads", "movies", "set-aside"}) {
        MakeOwnDirectory({directory.GetNumber(), folder, path + "/" + folder, kAdvice},
                         Forbidden::Writing);
    }
    // SQLite would create its file with the umask's mode, and gives that mode to its other files.
    OpenFile("store.sqlite", O_CREAT);
    for (char const* file : {"store.sqlite-wal", "store.sqlite-shm", "port"})
        OpenFile(file, 0);
}

Descriptor DataDirectory::OpenFile(std::string const& name, int flags) const {
    std::string whole = path + "/" + name;
    // O_NONBLOCK: opening a pipe would wait for its other end.
    Descriptor file(::openat(directory.GetNumber(), name.c_str(),
                             O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags, kOwnFileMode));
    if (!file && errno == ENOENT) return file;
    if (!file && errno == ELOOP)
        throw std::runtime_error(whole + " is a link, which is not followed");
    if (!file) Fail("cannot open " + whole);
    struct stat status = RequireOwn(file.GetNumber(), whole, kAdvice);
    if (!S_ISREG(status.st_mode)) throw std::runtime_error(whole + " is no plain file");
    if ((status.st_mode & kAnyAccess) != 0 && ::fchmod(file.GetNumber(), kOwnFileMode) != 0) {
        Fail("cannot close " + whole + " to other users");
    }
    return file;
}

std::string DataDirectory::UploadPath(UploadId const& id) const {
    return path + "/uploads/" + id.GetText();
}

std::string DataDirectory::MoviePath(FileId const& id) const {
    return path + "/movies/" + id.GetText();
}

std::int64_t DataDirectory::FreeBytes() const {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    struct statvfs disk {};
    if (::fstatvfs(directory.GetNumber(), &disk) != 0 || disk.f_blocks == 0) return kMost;
    auto blocks = static_cast<std::uint64_t>(disk.f_bavail);
    if (blocks > static_cast<std::uint64_t>(kMost) / disk.f_frsize) return kMost;
    return static_cast<std::int64_t>(blocks * disk.f_frsize);
}

std::string DataDirectory::SetMovieAside(FileId const& id) const {
    std::string kept = path + "/set-aside/" + id.GetText();
    if (std::filesystem::exists(kept)) throw std::runtime_error(kept + " is there already");
    std::filesystem::rename(MoviePath(id), kept);
    SyncDirectory(path + "/set-aside");
    SyncDirectory(GetMoviesPath());
    return kept;
}

int DataDirectory::GetLastPort() const {
    std::optional<File> file = File::OpenExisting(path + "/port");
    if (!file) return 0;
    std::string text(16, '\0');
    text.resize(file->ReadAt(0, text.data(), text.size()));
    std::optional<std::int64_t> port = ParseNumber(text.substr(0, text.find('\n')));
    return port && *port < 65536 ? static_cast<int>(*port) : 0;
}

void DataDirectory::RememberPort(int port) const {
    std::string text = std::to_string(port) + '\n';
    try {
        File file(path + "/port", File::Mode::Write);
        file.WriteAt(0, text);
        file.Truncate(static_cast<std::int64_t>(text.size()));
    } catch (std::exception const& error) {
        // For example on a full disk; movies can still be watched.
        std::fprintf(stderr, "quillo-service: cannot note the port: %s\n", error.what());
    }
}

}  // namespace quilloservice
