#pragma once

#include <cstdint>
#include <string>

#include "service/base/Descriptor.h"
#include "service/store/Ids.h"

namespace quilloservice {

/// The directory that holds a service's store and movies, locked against a second service for as
/// long as this object lives. It is the user's own: what is made in it is closed to others (0700
/// and 0600), and no link in it is followed. Any thread.
class DataDirectory {
public:
    /// Makes the directory when it is missing; the mode of one that is there stays what it is.
    /// Throws std::runtime_error when that fails, when the directory or something of the service's
    /// in it belongs to another user or is a link, when other users can write to it, and when
    /// another service has it.
    explicit DataDirectory(std::string const& path);

    [[nodiscard]] std::string GetStorePath() const { return path + "/store.sqlite"; }
    [[nodiscard]] std::string GetMoviesPath() const { return path + "/movies"; }

    /// The files of an unfinished upload and of a published movie. An ID is always a UUID, so no
    /// text from a client becomes part of a path.
    [[nodiscard]] std::string UploadPath(UploadId const& id) const;
    [[nodiscard]] std::string MoviePath(FileId const& id) const;

    /// How many bytes may still be written to the directory's disk; the most there are when the
    /// system does not know.
    [[nodiscard]] std::int64_t FreeBytes() const;

    /// Moves the movie's file to the folder of those that cannot be published; returns where it is
    /// then. Replaces nothing there. Throws std::runtime_error.
    [[nodiscard]] std::string SetMovieAside(FileId const& id) const;

    /// The port that was used last with this directory, 0 when there is none.
    [[nodiscard]] int GetLastPort() const;
    void RememberPort(int port) const;

private:
    void MakeFolder(std::string const& name) const;
    /// Opens a file of the service's own and closes it to other users; nothing when it is missing.
    Descriptor OpenFile(std::string const& name, int flags) const;

    std::string path;
    Descriptor directory;
    Descriptor lock;
};

}  // namespace quilloservice
