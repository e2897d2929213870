#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace quilloservice::test {

/// A temporary directory, removed by the destructor.
class TempDirectory {
public:
    TempDirectory() {
        std::string pattern = std::filesystem::temp_directory_path() / "quillo-service-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern;
    }
    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempDirectory(TempDirectory const&) = delete;
    TempDirectory& operator=(TempDirectory const&) = delete;

    [[nodiscard]] std::string const& GetPath() const { return path; }

private:
    std::string path;
};

}  // namespace quilloservice::test
