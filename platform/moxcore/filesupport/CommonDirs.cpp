#include "moxcore/filesupport/CommonDirs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/NoDestructor.h"
#include "moxcore/utility/UserEntry.h"

namespace moxcore::filesupport::commondirs {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kOthers = 0077;
constexpr mode_t kOthersWrite = 0022;

/// Where one of the directories lies.
struct Place {
    char const* variable;   // names the parent directory in the environment
    char const* belowHome;  // the parent directory where the variable does not
    char const* belowRoot;  // below SetUserRoot's directory
};

struct Settings {
    std::mutex mutex;
    std::string application = "moxcore";  // guarded by mutex
    fs::path root;                        // guarded by mutex; empty: by the XDG rules
};

/// Never destroyed: a directory may still be asked for while the process ends.
Settings& TheSettings() {
    static moxcore::utility::NoDestructor<Settings> settings;
    return *settings;
}

[[noreturn]] void Fail(fs::path const& directory, std::string const& reason) {
    throw config::ResultException(
        config::kUnknownFailure,
        "Cannot use the directory \"" + directory.string() + "\": " + reason);
}

/// The value of an environment variable that is to name a directory. XDG has relative ones ignored.
fs::path DirectoryFromEnvironment(char const* variable) {
    char const* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return value && *value == '/' ? value : "";
}

fs::path HomeDirectory() {
    if (fs::path home = DirectoryFromEnvironment("HOME"); !home.empty()) return home;
    auto const entry = utility::OwnUserEntry();
    if (!entry) Fail("~", "set HOME; the user database has no entry for this user");
    return entry->home;
}

/// Makes `directory` and those above it that are missing.
void MakeDirectory(fs::path const& directory) {
    if (mkdir(directory.c_str(), kOwnerOnly) == 0) return;
    if (errno == ENOENT && directory.has_relative_path()) {
        MakeDirectory(directory.parent_path());
        if (mkdir(directory.c_str(), kOwnerOnly) == 0) return;
    }
    if (errno != EEXIST) Fail(directory, std::generic_category().message(errno));
}

/// Throws unless `directory` is one, and this user's own.
struct stat RequireOwn(fs::path const& directory, bool mayBeLink) {
    struct stat status {};
    if ((mayBeLink ? stat : lstat)(directory.c_str(), &status) != 0)
        Fail(directory, std::generic_category().message(errno));
    if (S_ISLNK(status.st_mode)) Fail(directory, "it is a link, which is not followed");
    if (!S_ISDIR(status.st_mode)) Fail(directory, std::generic_category().message(ENOTDIR));
    if (status.st_uid != geteuid()) Fail(directory, "it belongs to another user");
    return status;
}

/// The directory that a host has named is its user's business: it is checked, not changed.
void CheckRoot(fs::path const& root) {
    if ((RequireOwn(root, true).st_mode & kOthersWrite) != 0)
        Fail(root, "other users can write to it; run chmod go-w, or name another one");
}

/// Takes other users' rights to `directory` away where they have any.
void CloseToOthers(fs::path const& directory, bool mayBeLink) {
    auto const status = RequireOwn(directory, mayBeLink);
    if ((status.st_mode & kOthers) != 0 && chmod(directory.c_str(), kOwnerOnly) != 0)
        Fail(directory, std::generic_category().message(errno));
}

File UserDirectory(Place const& place) {
    auto& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    fs::path directory;
    if (!settings.root.empty()) {
        MakeDirectory(settings.root);
        CheckRoot(settings.root);
        directory = settings.root / place.belowRoot;
    } else {
        directory = DirectoryFromEnvironment(place.variable);
        if (directory.empty()) directory = HomeDirectory() / place.belowHome;
        directory /= settings.application;
    }
    MakeDirectory(directory);
    CloseToOthers(directory, settings.root.empty());
    return File(string::UTF8to16(directory.string()), 0);
}

}  // namespace

File UserCacheDir() {
    return UserDirectory({"XDG_CACHE_HOME", ".cache", "cache"});
}

File UserConfigDir() {
    return UserDirectory({"XDG_CONFIG_HOME", ".config", "config"});
}

File UserDataDir() {
    return UserDirectory({"XDG_DATA_HOME", ".local/share", "data"});
}

File UserStateDir() {
    return UserDirectory({"XDG_STATE_HOME", ".local/state", "state"});
}

void SetApplicationName(string::UTF16String const& name) {
    auto& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    settings.application = string::UTF16to8(name);
}

void SetUserRoot(string::UTF16String const& directory) {
    auto& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    settings.root = string::UTF16to8(directory);
}

bool HasUserRoot() {
    auto& settings = TheSettings();
    std::lock_guard lock(settings.mutex);
    return !settings.root.empty();
}

}  // namespace moxcore::filesupport::commondirs
