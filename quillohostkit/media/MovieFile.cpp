#include "quillohostkit/media/MovieFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;
using moxcore::utility::Descriptor;

namespace fs = std::filesystem;

void RefuseMovie(fs::path const& path, std::string const& reason) {
    throw Failure(FailureKind::Export,
                  Text("$$$/Vistrel/quillohostkit/Movie/Cannot=Cannot share \"{file}\": {reason}",
                       {{"file", path.string()}, {"reason", reason}}));
}

MovieFile::MovieFile(fs::path const& path) {
    std::error_code error;
    canonical = fs::canonical(path, error);
    if (error == std::errc::no_such_file_or_directory)
        RefuseMovie(
            path,
            Text("$$$/Vistrel/quillohostkit/Movie/NoFile=there is no such file; check its name."));
    if (error) RefuseMovie(path, error.message() + ".");
    // Not blocking: a pipe that nobody writes to would be waited for.
    descriptor = Descriptor(open(canonical.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat found {};
    if (descriptor.GetNumber() < 0 || fstat(descriptor.GetNumber(), &found) != 0)
        RefuseMovie(
            path,
            Text("$$$/Vistrel/quillohostkit/Movie/Rights={reason}; check the rights to the file.",
                 {{"reason", std::generic_category().message(errno)}}));
    if (S_ISDIR(found.st_mode))
        RefuseMovie(path, Text("$$$/Vistrel/quillohostkit/Movie/Directory=it is a directory; name "
                               "a movie in it."));
    if (!S_ISREG(found.st_mode))
        RefuseMovie(path,
                    Text("$$$/Vistrel/quillohostkit/Movie/NotAFile=it is no file; name a movie."));
    if (found.st_size == 0)
        RefuseMovie(path,
                    Text("$$$/Vistrel/quillohostkit/Movie/Empty=it is empty; export it again."));
}

bool MovieFile::IsAt(fs::path const& path) const {
    struct stat mine {};
    struct stat there {};
    return fstat(descriptor.GetNumber(), &mine) == 0 && stat(path.c_str(), &there) == 0 &&
           mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

}  // namespace quillohostkit
