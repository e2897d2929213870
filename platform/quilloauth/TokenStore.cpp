#include "quilloauth/TokenStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "quilloauth/Descriptor.h"
#include "quillocommon/Saturating.h"
#include "quillosdk/Redact.h"

namespace quilloauth {
namespace {

using nlohmann::json;

constexpr mode_t kOwnerOnly = 0600;

Descriptor Open(std::string const& path, int flags) {
    return Descriptor(open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly));
}

/// Keeps other threads and processes out between reading the file and replacing it. Where locking
/// is not to be had it is done without: the worst is a sign-in more.
class Lock {
public:
    explicit Lock(std::string const& path) : file(Open(path + ".lock", O_RDWR | O_CREAT)) {
        while (file.IsOpen() && flock(file.Get(), LOCK_EX) != 0 && errno == EINTR) {
        }
    }

private:
    Descriptor file;
};

std::string ReadAll(std::string const& path) {
    auto const file = Open(path, O_RDONLY);
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) return {};
    if ((status.st_mode & 077) != 0) fchmod(file.Get(), kOwnerOnly);

    std::string text;
    char piece[4096];
    for (;;) {
        ssize_t const got = read(file.Get(), piece, sizeof piece);
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

/// Anything but a number of seconds counts as long ago: the tokens are renewed then.
moxcore::threads::TimePoint ExpiryIn(json const& entry) {
    auto const& seconds = entry.at("expires_at");
    if (!seconds.is_number_integer()) return {};
    std::uint64_t constexpr kLast = std::numeric_limits<std::int64_t>::max();
    return quillocommon::TimeAt(std::chrono::seconds(
        seconds.is_number_unsigned()
            ? static_cast<std::int64_t>(std::min(seconds.get<std::uint64_t>(), kLast))
            : seconds.get<std::int64_t>()));
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
        written = file.IsOpen() && WriteAll(file.Get(), text + "\n") && fsync(file.Get()) == 0;
    }
    if (written && std::rename(temporary.c_str(), path.c_str()) == 0) return true;
    unlink(temporary.c_str());
    return false;
}

}  // namespace

TokenStore::TokenStore(std::string path) : path(std::move(path)) {}

std::optional<Tokens> TokenStore::Load(std::string const& address) {
    {
        std::lock_guard guard(mutex);
        if (auto const found = unsaved.find(address); found != unsaved.end()) return found->second;
    }
    auto const services = ReadServices(path);
    try {
        auto const& entry = services.at(address);
        Tokens tokens{entry.at("access_token").get<std::string>(),
                      entry.at("refresh_token").get<std::string>(), ExpiryIn(entry)};
        bool const usable = quillosdk::IsToken(tokens.access) && quillosdk::IsToken(tokens.refresh);
        return usable ? std::optional(std::move(tokens)) : std::nullopt;
    } catch (json::exception const&) {  // no such entry, or none of ours
        return std::nullopt;
    }
}

bool TokenStore::Save(std::string const& address, Tokens const& tokens) {
    Lock const lock(path);
    auto services = ReadServices(path);
    services[address] = {
        {"access_token", tokens.access},
        {"refresh_token", tokens.refresh},
        {"expires_at",
         std::chrono::floor<std::chrono::seconds>(tokens.expiry.time_since_epoch()).count()}};
    bool const saved = WriteServices(path, std::move(services));
    std::lock_guard guard(mutex);
    if (saved)
        unsaved.erase(address);
    else
        unsaved.insert_or_assign(address, tokens);
    return saved;
}

bool TokenStore::Forget(std::string const& address) {
    {
        std::lock_guard guard(mutex);
        unsaved.erase(address);
    }
    Lock const lock(path);
    auto services = ReadServices(path);
    return services.erase(address) == 0 || WriteServices(path, std::move(services));
}

}  // namespace quilloauth
