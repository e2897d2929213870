#include "moxcore/config/TextTables.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "moxcore/string/Conversions.h"

namespace moxcore::config {
namespace {

namespace fs = std::filesystem;

/// "lib/x86_64-linux-gnu" lies two levels below what "share" lies in.
constexpr int kLevelsUp = 3;

/// Throws with a sentence that says what is wrong with the value.
std::string TextOf(std::string const& key, nlohmann::json const& value) {
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) throw std::runtime_error("the value of \"" + key + "\" is no text");
    std::string text;
    for (auto const& line : value)
        text += line.get<std::string>() + '\n';
    return text;
}

/// Throws with a sentence that says what is wrong with the file.
std::map<std::string, string::UTF16String> ReadTable(fs::path const& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot be opened");
    auto const parsed = nlohmann::json::parse(file);
    std::map<std::string, string::UTF16String> table;
    for (auto const& [key, value] : parsed.get_ref<nlohmann::json::object_t const&>())
        table.emplace(key, string::UTF8to16(TextOf(key, value)));
    return table;
}

std::string Variable(char const* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    char const* const value = std::getenv(name);
    return value ? value : "";
}

bool IsEnglish(std::string const& name) {
    auto const language = name.substr(0, name.find_first_of("_-.@"));
    return language.empty() || language == "C" || language == "POSIX" || language == "en";
}

/// The locale of messages in the environment.
std::string MessagesLocale() {
    for (char const* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (auto name = Variable(variable); !name.empty()) return name;
    return {};
}

/// "de_AT.UTF-8@euro" stands for "de_AT@euro", "de_AT" and "de".
void AddLocales(std::string name, std::vector<std::string>& locales) {
    if (auto const dot = name.find('.'); dot != name.npos)
        name.erase(dot, std::min(name.find('@', dot), name.size()) - dot);
    if (IsLocaleName(name)) locales.push_back(name);
    for (char const* const mark : {"@", "_-"})
        if (auto const end = name.find_first_of(mark); end != name.npos) {
            name.resize(end);
            if (IsLocaleName(name)) locales.push_back(name);
        }
}

}  // namespace

void TextTables::Add(fs::path const& directory) {
    if (directory.empty() || locales.empty()) return;
    std::error_code error;
    std::vector<fs::path> folders;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error))
        if (std::error_code unknown; entry->is_directory(unknown)) folders.push_back(entry->path());
    std::sort(folders.begin(), folders.end());
    AddFolder(directory);
    for (auto const& folder : folders)
        AddFolder(folder);
}

void TextTables::AddFolder(fs::path const& folder) {
    for (auto const& name : locales) {
        auto const path = folder / (name + ".json");
        if (std::error_code error; !fs::exists(path, error)) continue;
        try {
            for (auto& [key, text] : ReadTable(path))
                texts.insert_or_assign(key, std::move(text));
            if (locale.empty()) locale = name;
        } catch (std::exception const& failure) {
            complaints.push_back("Texts of \"" + path.string() + "\" not taken: " + failure.what());
        }
        return;
    }
}

bool IsLocaleName(std::string const& locale) {
    constexpr char kAllowed[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_@";
    return !locale.empty() && locale.find_first_not_of(kAllowed) == std::string::npos;
}

std::vector<std::string> LocalesOfUser() {
    auto const messages = MessagesLocale();
    auto const language = messages.substr(0, messages.find('.'));
    // As elsewhere: who has asked for no language in particular gets none of LANGUAGE.
    if (language.empty() || language == "C" || language == "POSIX") return {};
    auto const list = Variable("LANGUAGE");
    std::istringstream names(list.empty() ? messages : list);
    std::vector<std::string> locales;
    for (std::string name; std::getline(names, name, ':');) {
        if (name.empty()) continue;
        if (IsEnglish(name)) break;
        AddLocales(name, locales);
    }
    return locales;
}

fs::path InstalledTables() {
    static char const here = 0;
    Dl_info info{};
    if (dladdr(&here, &info) == 0 || !info.dli_fname) return {};
    std::error_code error;
    auto folder = fs::weakly_canonical(info.dli_fname, error).parent_path();
    for (int level = 0; level < kLevelsUp; ++level, folder = folder.parent_path())
        if (auto tables = folder / MOXCORE_TABLES; fs::is_directory(tables, error)) return tables;
    return {};
}

}  // namespace moxcore::config
