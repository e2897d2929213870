#include "service/oauth/LocalUserSecret.h"

#include <fcntl.h>
#include <netdb.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "service/base/Digest.h"
#include "service/base/Text.h"

namespace quilloservice {

namespace {

constexpr mode_t kOwnDirectory = 0700;
constexpr mode_t kOwnFile = 0600;
constexpr mode_t kWritableByOthers = 0022;
constexpr mode_t kOpenToOthers = 0077;

std::string Environment(char const* name) {
    char const* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string Home() {
    std::string home = Environment("HOME");
    if (!home.empty()) return home;
    passwd const* entry = ::getpwuid(::geteuid());
    return entry != nullptr ? entry->pw_dir : "";
}

/// Opens the directory `name` in `parent`, which has to be the user's, with none of the rights
/// `forbidden`. `path` is what messages call it.
Descriptor OpenOwn(int parent, std::string const& name, std::string const& path, mode_t forbidden,
                   int flags = O_NOFOLLOW) {
    Descriptor directory(
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
    struct stat status {};
    if (!directory || ::fstat(directory.GetNumber(), &status) != 0) {
        throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
    }
    if (status.st_uid != ::geteuid()) throw std::runtime_error(path + " belongs to another user");
    if ((status.st_mode & forbidden) != 0) {
        throw std::runtime_error(path + " is open to other users; run chmod 700 '" + path + "'");
    }
    return directory;
}

Descriptor MakeOwn(int parent, std::string const& name, std::string const& path, mode_t forbidden) {
    if (::mkdirat(parent, name.c_str(), kOwnDirectory) != 0 && errno != EEXIST) {
        throw std::runtime_error("cannot make " + path + ": " + std::strerror(errno));
    }
    return OpenOwn(parent, name, path, forbidden);
}

/// The numbers of `host`, the first that its name stands for: where the server listens.
std::string NumbersOf(std::string const& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return {};
    std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
    char numbers[NI_MAXHOST];
    if (::getnameinfo(found->ai_addr, found->ai_addrlen, numbers, sizeof(numbers), nullptr, 0,
                      NI_NUMERICHOST) != 0) {
        return {};
    }
    return numbers;
}

/// The loopback addresses at which a service on `host` is found. Only at these: what listens at the
/// same port of another one may be somebody else's, and must not be handed the secret.
std::vector<std::string> LoopbackAddressesOf(std::string const& host) {
    std::string numbers = NumbersOf(host);
    if (numbers == "0.0.0.0") return {"127.0.0.1"};
    if (numbers == "::") return {"::1", "127.0.0.1"};
    if (numbers == "::1" || numbers.starts_with("127.")) return {numbers};
    return {};
}

}  // namespace

LocalUserSecret::LocalUserSecret(std::string const& host, int port)
    : secret(ToHex(RandomBytes(32))), port(std::to_string(port)) {
    std::vector<std::string> addresses = LoopbackAddressesOf(host);
    if (addresses.empty()) return;
    OpenDirectory();
    for (std::string const& address : addresses)
        Write(address);
}

LocalUserSecret::~LocalUserSecret() {
    for (auto const& [name, file] : files) {
        struct stat ours {};
        struct stat there {};
        // A service that was started at this address since has put its own in the place of ours.
        if (::fstat(file.GetNumber(), &ours) == 0 &&
            ::fstatat(directory.GetNumber(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
            ours.st_ino == there.st_ino) {
            ::unlinkat(directory.GetNumber(), name.c_str(), 0);
        }
    }
    if (directory) ::unlinkat(parent.GetNumber(), port.c_str(), AT_REMOVEDIR);
}

bool LocalUserSecret::Is(std::string_view claim) const {
    return IsSameSecret(claim, secret);
}

void LocalUserSecret::OpenDirectory() {
    std::string complaints;
    std::string cache = Home() + "/.cache";
    for (std::string base : {Environment("XDG_RUNTIME_DIR"), cache}) {
        if (base.empty()) continue;
        try {
            if (base == cache) ::mkdir(base.c_str(), kOwnDirectory);
            Descriptor root = OpenOwn(AT_FDCWD, base, base, kWritableByOthers, 0);
            base += "/quillo";
            parent = MakeOwn(root.GetNumber(), "quillo", base, kWritableByOthers);
            directory = MakeOwn(parent.GetNumber(), port, base + "/" + port, kOpenToOthers);
            return;
        } catch (std::runtime_error const& error) {
            complaints += std::string("; ") + error.what();
        }
    }
    throw std::runtime_error(
        "--trust-local-user needs a directory that only its user can read: $XDG_RUNTIME_DIR or "
        "~/.cache" +
        complaints);
}

void LocalUserSecret::Write(std::string const& address) {
    std::string name = address + ".secret";
    std::string temporary = name + ".new";
    ::unlinkat(directory.GetNumber(), temporary.c_str(), 0);  // of a service that was killed
    Descriptor file(::openat(directory.GetNumber(), temporary.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnFile));
    std::string text = secret + "\n";
    if (!file || ::fchmod(file.GetNumber(), kOwnFile) != 0 ||
        ::write(file.GetNumber(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        ::renameat(directory.GetNumber(), temporary.c_str(), directory.GetNumber(), name.c_str()) !=
            0) {
        throw std::runtime_error("cannot write the secret of the local user: " +
                                 std::string(std::strerror(errno)));
    }
    files.emplace_back(std::move(name), std::move(file));
}

}  // namespace quilloservice
