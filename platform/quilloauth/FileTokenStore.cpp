#include "quilloauth/FileTokenStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

#include "moxcore/utility/Descriptor.h"
#include "quilloauth/TokenJson.h"

namespace quilloauth {

using moxcore::utility::Descriptor;
namespace {

using nlohmann::json;

constexpr mode_t kOwnerOnly = 0600;
constexpr char kSignedOut[] = "signed_out";

Descriptor Open(std::string const& path, int flags) {
    return Descriptor(open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly));
}

/// Keeps other threads and processes out between reading the file and replacing it. Where locking
/// is not to be had it is done without: the worst is a sign-in more.
class Lock {
public:
    explicit Lock(std::string const& path) : file(Open(path + ".lock", O_RDWR | O_CREAT)) {
        while (file && flock(file.GetNumber(), LOCK_EX) != 0 && errno == EINTR) {
        }
    }

private:
    Descriptor file;
};

std::string ReadAll(std::string const& path) {
    auto const file = Open(path, O_RDONLY);
    struct stat status {};
    if (!file || fstat(file.GetNumber(), &status) != 0) return {};
    if ((status.st_mode & 077) != 0) fchmod(file.GetNumber(), kOwnerOnly);

    std::string text;
    char piece[4096];
    for (;;) {
        ssize_t const got = read(file.GetNumber(), piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0 ? text : std::string();
        text.append(piece, static_cast<std::size_t>(got));
    }
}

/// The tokens by address: an object, empty where the file holds nothing that we know.
json ReadServices(std::string const& path) {
    auto const root = json::parse(ReadAll(path), nullptr, false);
    if (!root.is_object()) return json::object();
    auto const services = root.find("services");
    return services != root.end() && services->is_object() ? *services : json::object();
}

bool WriteAll(int descriptor, std::string const& text) {
    for (std::size_t at = 0; at < text.size();) {
        ssize_t const written = write(descriptor, text.data() + at, text.size() - at);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        at += static_cast<std::size_t>(written);
    }
    return true;
}

bool WriteServices(std::string const& path, json services) {
    auto const text =
        json{{"services", std::move(services)}}.dump(2, ' ', false, json::error_handler_t::replace);
    auto const temporary = path + ".new";
    unlink(temporary.c_str());  // of a process that was killed; it may be anyone's to read
    bool written = false;
    {
        auto const file = Open(temporary, O_WRONLY | O_CREAT | O_EXCL);
        written = file && WriteAll(file.GetNumber(), text + "\n") && fsync(file.GetNumber()) == 0;
    }
    if (written && std::rename(temporary.c_str(), path.c_str()) == 0) return true;
    unlink(temporary.c_str());
    return false;
}

/// Has `change` alter the entries, and replaces the file if it says that it did.
template <class Change>
void ChangeServices(std::string const& path, Change change) {
    Lock const lock(path);
    auto services = ReadServices(path);
    if (change(services) && !WriteServices(path, std::move(services)))
        throw TokenStoreFailure(
            "the file for it cannot be written; look at the user's configuration directory");
}

/// The entry for `address`; null when there is none.
json EntryFor(std::string const& path, std::string const& address) {
    auto const services = ReadServices(path);
    auto const entry = services.find(address);
    return entry == services.end() ? json() : *entry;
}

}  // namespace

FileTokenStore::FileTokenStore(std::string path) : path(std::move(path)) {}

std::optional<Tokens> FileTokenStore::Load(std::string const& address) {
    return TokensFrom(EntryFor(path, address));
}

void FileTokenStore::Save(std::string const& address, Tokens const& tokens) {
    ChangeServices(path, [&](json& services) {
        services[address] = ToJson(tokens);
        return true;
    });
}

void FileTokenStore::Forget(std::string const& address) {
    ChangeServices(path, [&](json& services) { return services.erase(address) != 0; });
}

void FileTokenStore::ForgetIfStill(std::string const& address, Tokens const& tokens) {
    ChangeServices(path, [&](json& services) {
        auto const entry = services.find(address);
        if (entry == services.end() || *entry != ToJson(tokens)) return false;
        services.erase(entry);
        return true;
    });
}

void FileTokenStore::MarkSignedOut(std::string const& address) {
    ChangeServices(path, [&](json& services) {
        services[address] = {{kSignedOut, true}};
        return true;
    });
}

bool FileTokenStore::IsMarkedSignedOut(std::string const& address) {
    auto const entry = EntryFor(path, address);
    return entry.is_object() && entry.contains(kSignedOut);
}

}  // namespace quilloauth
