#include "quilloauth/LocalUserSecret.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "moxcore/utility/Descriptor.h"
#include "quillocommon/Url.h"

namespace quilloauth {

using moxcore::utility::Descriptor;
namespace {

constexpr mode_t kWritableByOthers = 0022;
constexpr mode_t kOpenToOthers = 0077;
constexpr std::size_t kLongestSecret = 256;

std::string FromEnvironment(char const* name) {
    char const* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value && value[0] == '/' ? value : "";
}

std::string Home() {
    auto home = FromEnvironment("HOME");
    if (!home.empty()) return home;
    auto const* const entry = getpwuid(geteuid());  // NOLINT(concurrency-mt-unsafe)
    return entry ? entry->pw_dir : "";
}

/// What is open as `file`, if it is of the `type` wanted, this user's, and gives others none of the
/// rights `forbidden`.
bool IsOwn(Descriptor const& file, mode_t type, mode_t forbidden) {
    struct stat status {};
    return file && fstat(file.GetNumber(), &status) == 0 && (status.st_mode & S_IFMT) == type &&
           status.st_uid == geteuid() && (status.st_mode & forbidden) == 0;
}

Descriptor OpenDirectory(int parent, std::string const& name, mode_t forbidden,
                         int flags = O_NOFOLLOW) {
    Descriptor directory(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
    return IsOwn(directory, S_IFDIR, forbidden) ? std::move(directory) : Descriptor();
}

std::optional<std::string> ReadSecret(int directory, std::string const& name) {
    // Not to wait for the other end, should it be a pipe.
    Descriptor const file(
        openat(directory, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!IsOwn(file, S_IFREG, kOpenToOthers)) return std::nullopt;
    std::string text(kLongestSecret, '\0');
    auto const size = read(file.GetNumber(), text.data(), text.size());
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (text.ends_with('\n')) text.pop_back();
    bool const isPrintable =
        std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
    return isPrintable && !text.empty() ? std::optional(std::move(text)) : std::nullopt;
}

std::string PortOf(quillocommon::Url const& url) {
    auto const rest = url.origin.substr(url.origin.find("://") + 3 + url.host.size());
    if (!rest.empty()) return rest.substr(1);
    return url.origin.starts_with("https:") ? "443" : "80";
}

/// The numbers of a loopback host, as the files are named.
std::vector<std::string> AddressesOf(std::string const& host) {
    if (host == "localhost") return {"127.0.0.1", "::1"};
    return {host.starts_with('[') ? host.substr(1, host.size() - 2) : host};
}

}  // namespace

std::vector<std::string> FindLocalUserSecrets(std::string const& address) {
    std::vector<std::string> secrets;
    auto const url = quillocommon::ParseUrl(address);
    if (!url || !url->IsLoopback()) return secrets;
    for (auto const& base : {FromEnvironment("XDG_RUNTIME_DIR"), Home() + "/.cache"}) {
        if (base.empty()) continue;
        auto const root = OpenDirectory(AT_FDCWD, base, kWritableByOthers, 0);
        auto const parent = OpenDirectory(root.GetNumber(), "quillo", kWritableByOthers);
        auto const directory = OpenDirectory(parent.GetNumber(), PortOf(*url), kOpenToOthers);
        if (!directory) continue;
        for (auto const& host : AddressesOf(url->host)) {
            if (auto secret = ReadSecret(directory.GetNumber(), host + ".secret"))
                secrets.push_back(*std::move(secret));
        }
    }
    return secrets;
}

}  // namespace quilloauth
