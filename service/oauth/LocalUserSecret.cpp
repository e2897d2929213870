#include "service/oauth/LocalUserSecret.h"

#include <fcntl.h>
#include <netdb.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "service/base/Digest.h"
#include "service/base/OwnFiles.h"
#include "service/base/Text.h"

namespace quilloservice {

using moxcore::utility::Descriptor;

namespace {

std::string Environment(char const* name) {
    char const* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets any
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string Home() {
    std::string home = Environment("HOME");
    if (!home.empty()) return home;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): called once, at the start
    passwd const* entry = ::getpwuid(::geteuid());
    return entry != nullptr ? entry->pw_dir : "";
}

/// The numeric form of the first address to which `host` resolves, on which the server listens.
std::string NumericAddress(std::string const& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return {};
    std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
    char address[NI_MAXHOST];
    if (::getnameinfo(found->ai_addr, found->ai_addrlen, address, sizeof(address), nullptr, 0,
                      NI_NUMERICHOST) != 0) {
        return {};
    }
    return address;
}

/// The loopback addresses that lead to a service on `host`. On other loopback addresses, the port
/// may belong to another user, who must not get the secret.
std::vector<std::string> LoopbackAddressesOf(std::string const& host) {
    std::string address = NumericAddress(host);
    if (address == "0.0.0.0") return {"127.0.0.1"};
    if (address == "::") return {"::1", "127.0.0.1"};
    if (address == "::1" || address.starts_with("127.")) return {address};
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
        // A later service on this address may have replaced the file.
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
            if (base == cache) ::mkdir(base.c_str(), kOwnDirectoryMode);
            Descriptor root =
                OpenOwnDirectory({AT_FDCWD, base, base}, Forbidden::Writing, /*flags=*/0);
            base += "/quillo";
            parent = MakeOwnDirectory({root.GetNumber(), "quillo", base}, Forbidden::Writing);
            directory = MakeOwnDirectory({parent.GetNumber(), port, base + "/" + port},
                                         Forbidden::AnyAccess);
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
    ::unlinkat(directory.GetNumber(), temporary.c_str(), 0);  // left by a service that was killed
    Descriptor file(::openat(directory.GetNumber(), temporary.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnFileMode));
    std::string text = secret + "\n";
    if (!file || ::fchmod(file.GetNumber(), kOwnFileMode) != 0 ||
        ::write(file.GetNumber(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        ::renameat(directory.GetNumber(), temporary.c_str(), directory.GetNumber(), name.c_str()) !=
            0) {
        throw std::runtime_error("cannot write the secret of the local user: " +
                                 std::generic_category().message(errno));
    }
    files.emplace_back(std::move(name), std::move(file));
}

}  // namespace quilloservice
