#include "service/ConfigFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>

#include "service/Options.h"
#include "service/base/Text.h"

namespace quilloservice {

namespace {

UsageError Unreadable(std::string const& path, int error) {
    return UsageError("cannot read " + path + ": " + std::generic_category().message(error));
}

}  // namespace

std::vector<ConfigEntry> ReadConfigFile(std::string const& path) {
    std::ifstream file(path);
    if (!file) throw Unreadable(path, errno);
    std::vector<ConfigEntry> entries;
    int number = 0;
    for (std::string text; std::getline(file, text);) {
        ++number;
        std::string_view const line = Trim(text);
        if (line.empty() || line.starts_with('#')) continue;
        std::size_t const equals = line.find('=');
        if (equals == std::string_view::npos)
            throw UsageError(path + ", line " + std::to_string(number) +
                             ": expected \"name = value\"");
        entries.push_back({number, std::string(Trim(line.substr(0, equals))),
                           std::string(Trim(line.substr(equals + 1)))});
    }
    if (file.bad()) throw Unreadable(path, EISDIR);
    return entries;
}

void CheckIsPrivate(std::string const& path) {
    struct ::stat status {};
    if (::stat(path.c_str(), &status) != 0) throw Unreadable(path, errno);
    if ((status.st_mode & (S_IRGRP | S_IROTH)) != 0)
        throw UsageError(path + " contains the database's password, and other users can read it; " +
                         "chmod 600 it");
}

}  // namespace quilloservice
