#include "quillocommon/ServiceAddress.h"

#include <cstdlib>
#include <mutex>
#include <optional>

#include "quillocommon/Url.h"

namespace quillocommon {
namespace {

std::optional<std::string> AddressIn(std::string const& url) {
    auto const parts = ParseUrl(url);
    if (!parts || parts->hasUser || parts->hasQuery || parts->hasFragment ||
        parts->target.find_first_not_of('/') != std::string::npos)
        return std::nullopt;
    return parts->origin;
}

class Address {
public:
    Address() {
        // Asked once, before any thread of ours could change the environment.
        char const* wanted = std::getenv("QUILLO_SERVICE_URL");  // NOLINT(concurrency-mt-unsafe)
        if (wanted) Set(wanted);
    }

    [[nodiscard]] std::string Get() const {
        std::lock_guard lock(mutex);
        return address;
    }

    [[nodiscard]] std::string Followed(std::string_view path) const {
        std::lock_guard lock(mutex);
        if (address.empty()) return {};
        std::string url;
        url.reserve(address.size() + path.size());
        url.append(address).append(path);
        return url;
    }

    bool Set(std::string const& url) {
        auto const wanted = AddressIn(url);
        if (!wanted) return false;
        std::lock_guard lock(mutex);
        address = *wanted;
        return true;
    }

private:
    mutable std::mutex mutex;
    std::string address;  // guarded by mutex
};

/// Never destroyed: requests may still be made while the process ends.
Address& TheAddress() {
    static Address& address = *new Address;
    return address;
}

}  // namespace

std::string GetServiceAddress() {
    return TheAddress().Get();
}

std::string UrlAtService(std::string_view path) {
    return TheAddress().Followed(path);
}

bool SetServiceAddress(std::string const& url) {
    return TheAddress().Set(url);
}

}  // namespace quillocommon
