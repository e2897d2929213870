#include "quillocommon/ServiceAddress.h"

#include <cstdlib>
#include <mutex>
#include <optional>
#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/utility/NoDestructor.h"
#include "quillocommon/Failures.h"
#include "quillocommon/Url.h"

namespace quillocommon {
namespace {

/// The URL of a service, if `url` is one.
std::optional<Url> AddressIn(std::string const& url) {
    auto parts = ParseUrl(url);
    if (!parts || parts->hasUser || parts->hasQuery || parts->hasFragment ||
        parts->target.find_first_not_of('/') != std::string::npos)
        return std::nullopt;
    return parts;
}

bool IsInsecure(Url const& url) {
    return !url.origin.starts_with("https:") && !url.IsLoopback();
}

class Address {
public:
    Address() {
        // Asked once, before any thread of ours could change the environment.
        char const* wanted = std::getenv("QUILLO_SERVICE_URL");  // NOLINT(concurrency-mt-unsafe)
        if (!wanted) return;
        fromEnvironment = wanted;
        Set(fromEnvironment);
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
        bool const isInsecure = IsInsecure(*wanted);
        {
            std::lock_guard lock(mutex);
            if (isInsecure && !allowsInsecure) return false;
            address = wanted->origin;
            if (!isInsecure || std::exchange(hasWarned, true)) return true;
        }
        ReportFailure({Step::EncryptRequests, moxcore::config::kUnknownFailure, 0,
                       "The service at " + wanted->origin +
                           " is reached by plain http: everybody on the way can read the sign-in "
                           "and the movies. Use https where the network is not your own."});
        return true;
    }

    void AllowInsecure() {
        {
            std::lock_guard lock(mutex);
            allowsInsecure = true;
            if (!address.empty()) return;
        }
        Set(fromEnvironment);
    }

    [[nodiscard]] std::string WhyNone() const {
        if (fromEnvironment.empty()) return "no service address is set (QUILLO_SERVICE_URL)";
        auto const url = AddressIn(fromEnvironment);
        if (!url)
            return "QUILLO_SERVICE_URL is no address of a service; write it like "
                   "https://review.example, without a path";
        return "QUILLO_SERVICE_URL is plain http to another machine (" + url->origin +
               "), which this application does not allow; use https";
    }

private:
    std::string fromEnvironment;  // set while this is made

    mutable std::mutex mutex;  // guards all below
    std::string address;
    bool allowsInsecure = false;
    bool hasWarned = false;
};

/// Never destroyed: requests may still be made while the process ends.
Address& TheAddress() {
    static moxcore::utility::NoDestructor<Address> address;
    return *address;
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

bool IsInsecureServiceAddress(std::string const& url) {
    auto const address = AddressIn(url);
    return address && IsInsecure(*address);
}

void AllowInsecureHttp() {
    TheAddress().AllowInsecure();
}

std::string WhyNoServiceAddress() {
    return TheAddress().WhyNone();
}

}  // namespace quillocommon
