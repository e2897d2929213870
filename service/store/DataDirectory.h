#pragma once

#include <cstdint>
#include <string>

#include "moxcore/utility/Descriptor.h"
#include "service/store/Ids.h"

namespace quilloservice {

/// The directory of the store and the movies, locked against a second service during this object's
/// lifetime. It must belong to the user. Directories and files in it are created with the modes
/// 0700 and 0600, and links in it are not followed. Any thread.
class DataDirectory {
public:
    /// Creates the directory if it is missing, and keeps the mode of an existing one. Throws
    /// std::runtime_error on failure; if the directory or one of its entries belongs to another
    /// user, is a link or is writable by others; and if another service uses the directory.
    explicit DataDirectory(std::string const& path);

    [[nodiscard]] std::string GetStorePath() const { return path + "/store.sqlite"; }
    [[nodiscard]] std::string GetMoviesPath() const { return path + "/movies"; }

    /// The files of an unfinished upload and of a published movie. An ID is always a UUID, so no
    /// text from a client becomes part of a path.
    [[nodiscard]] std::string UploadPath(UploadId const& id) const;
    [[nodiscard]] std::string MoviePath(FileId const& id) const;

    /// Free space on the directory's disk, in bytes; the largest number if it is unknown.
    [[nodiscard]] std::int64_t FreeBytes() const;

    /// Moves the file of a movie that cannot be published to the folder `set-aside` and returns its
    /// new path. Throws std::runtime_error, also if that path exists.
    [[nodiscard]] std::string SetMovieAside(FileId const& id) const;

    /// The port on which the service last listened with this directory; 0 if there is none.
    [[nodiscard]] int GetLastPort() const;
    void RememberPort(int port) const;

private:
    /// Opens a file and restricts its mode to the user; nothing if it is missing.
    moxcore::utility::Descriptor OpenFile(std::string const& name, int flags) const;

    std::string path;
    moxcore::utility::Descriptor directory;
    moxcore::utility::Descriptor lock;
};

}  // namespace quilloservice
