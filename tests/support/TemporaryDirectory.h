#pragma once

#include <filesystem>
#include <string>

#include "moxcore/string/UTF16String.h"

namespace testsupport {

/// An empty directory of the test's own, removed with all that is in it at the end.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;

    [[nodiscard]] std::filesystem::path const& Path() const { return path; }

    /// The path as the core library's text.
    [[nodiscard]] moxcore::string::UTF16String Text() const;

    /// Writes the file `name` and returns its path.
    std::filesystem::path Write(std::string const& name, std::string const& contents) const;

private:
    std::filesystem::path path;
};

}  // namespace testsupport
