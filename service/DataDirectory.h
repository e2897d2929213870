#pragma once

#include <string>
#include <string_view>

namespace quilloservice {

/// The directory that holds a service's store and movies, locked against a second service for as
/// long as this object lives.
class DataDirectory {
public:
    /// Makes the directory when it is missing. Throws std::runtime_error when that fails or when
    /// another service has it.
    explicit DataDirectory(std::string path);
    ~DataDirectory();
    DataDirectory(const DataDirectory&) = delete;
    DataDirectory& operator=(const DataDirectory&) = delete;

    [[nodiscard]] std::string StorePath() const { return path_ + "/store.sqlite"; }
    [[nodiscard]] std::string MoviesPath() const { return path_ + "/movies"; }

    /// Where an upload grows, and where the movie it becomes stands. `id` has to be a UUID; any
    /// other text throws, so that nothing a client sends can become a path.
    [[nodiscard]] std::string UploadPath(std::string_view id) const;
    [[nodiscard]] std::string MoviePath(std::string_view id) const;

    /// Moves the movie's file to the folder of those that cannot be published; returns where it is
    /// then. Replaces nothing there. Throws std::runtime_error.
    [[nodiscard]] std::string SetMovieAside(std::string_view id) const;

    /// The port that was used last with this directory, 0 when there is none.
    [[nodiscard]] int LastPort() const;
    void RememberPort(int port) const;

private:
    [[nodiscard]] std::string PathOf(std::string_view folder, std::string_view id) const;

    std::string path_;
    int lock_ = -1;
};

}  // namespace quilloservice
