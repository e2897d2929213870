#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "moxcore/string/Conversions.h"

namespace testsupport {

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "quillo-test-XXXXXX";
    if (!mkdtemp(pattern.data()))
        throw std::system_error(errno, std::generic_category(), "mkdtemp " + pattern);
    path = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

moxcore::string::UTF16String TemporaryDirectory::Text() const {
    return moxcore::string::UTF8to16(path.string());
}

std::filesystem::path TemporaryDirectory::Write(std::string const& name,
                                                std::string const& contents) const {
    auto file = path / name;
    std::ofstream out(file, std::ios::binary);
    out << contents;
    out.close();
    if (!out) throw std::runtime_error("cannot write " + file.string());
    return file;
}

}  // namespace testsupport
