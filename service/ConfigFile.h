#pragma once

#include <string>
#include <vector>

namespace quilloservice {

/// An option in a configuration file.
struct ConfigEntry {
    int line = 0;      ///< from 1
    std::string name;  ///< as on the command line, without the dashes
    std::string value;
};

/// Reads `name = value` lines. Blank lines and lines that begin with "#" are skipped; blanks around
/// name and value are removed. Throws UsageError, which names the line, for a line without "=", and
/// for a file that cannot be read.
std::vector<ConfigEntry> ReadConfigFile(std::string const& path);

/// Throws UsageError if somebody else than the file's owner can read it.
void CheckIsPrivate(std::string const& path);

}  // namespace quilloservice
