#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "moxcore/string/UTF16String.h"

namespace moxcore::config {

/// Texts by their keys, read from tables. One thread at a time.
struct TextTables {
    /// Reads the table of the first of `locales` that `directory` has, and so in each of its
    /// folders, over what there is. Never throws; a table that is left out adds to `complaints`.
    void Add(std::filesystem::path const& directory);

    std::vector<std::string> locales;  // best first
    std::map<std::string, string::UTF16String, std::less<>> texts;
    std::string locale;  // of the first table that was read; empty: none was
    std::vector<std::string> complaints;

private:
    void AddFolder(std::filesystem::path const& folder);
};

/// Keeps a locale taken from the environment from naming a file elsewhere.
[[nodiscard]] bool IsLocaleName(std::string const& locale);

/// The locales in which the user reads, best first, by the environment; up to the first that is
/// English or has no language.
[[nodiscard]] std::vector<std::string> LocalesOfUser();

/// Where the tables are that are installed with this library, or built with it; empty: nowhere.
[[nodiscard]] std::filesystem::path InstalledTables();

}  // namespace moxcore::config
