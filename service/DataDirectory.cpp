#include "service/DataDirectory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "service/File.h"
#include "service/Uuid.h"

namespace quilloservice {

DataDirectory::DataDirectory(std::string path) : path_(std::move(path)) {
    std::error_code error;
    for (const char* folder : {"/uploads", "/movies"}) {
        std::filesystem::create_directories(path_ + folder, error);
        if (error) {
            throw std::runtime_error("cannot make " + path_ + folder + ": " + error.message());
        }
    }
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, error);
    lock_ = ::open((path_ + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock_ < 0) throw std::runtime_error("cannot lock " + path_ + ": " + std::strerror(errno));
    if (::flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        ::close(lock_);
        throw std::runtime_error("another quillo-service is running on " + path_ +
                                 "; stop it, or give this one a --data directory of its own");
    }
}

DataDirectory::~DataDirectory() {
    ::close(lock_);
}

std::string DataDirectory::UploadPath(std::string_view id) const {
    return PathOf("/uploads/", id);
}

std::string DataDirectory::MoviePath(std::string_view id) const {
    return PathOf("/movies/", id);
}

std::string DataDirectory::PathOf(std::string_view folder, std::string_view id) const {
    if (!IsUuid(id)) throw std::invalid_argument("not a UUID");
    return path_ + std::string(folder) + std::string(id);
}

std::string DataDirectory::SetMovieAside(std::string_view id) const {
    std::string kept = PathOf("/set-aside/", id);
    std::filesystem::create_directory(path_ + "/set-aside");
    if (std::filesystem::exists(kept)) throw std::runtime_error(kept + " is there already");
    std::filesystem::rename(MoviePath(id), kept);
    SyncDirectory(path_ + "/set-aside");
    SyncDirectory(MoviesPath());
    return kept;
}

int DataDirectory::LastPort() const {
    int port = 0;
    std::ifstream(path_ + "/port") >> port;
    return port > 0 && port < 65536 ? port : 0;
}

void DataDirectory::RememberPort(int port) const {
    std::ofstream(path_ + "/port") << port << '\n';
}

}  // namespace quilloservice
