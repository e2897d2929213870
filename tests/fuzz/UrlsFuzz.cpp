// URLs: the service's address, which a user sets, and where the service leads from there
// (Location).

#include <cctype>
#include <string>
#include <string_view>

#include "quillocommon/ServiceAddress.h"
#include "quillocommon/Url.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using quillocommon::ParseUrl;

/// Four numbers of which the first is 127, as inet_aton would have it in no shorter form.
bool IsLoopbackAddress(std::string_view host) {
    int numbers = 0;
    while (!host.empty()) {
        auto const number = host.substr(0, host.find('.'));
        host.remove_prefix(std::min(number.size() + 1, host.size()));
        if (number.empty() || number.size() > 3) return false;
        for (char const c : number)
            if (c < '0' || c > '9') return false;
        if (numbers++ == 0 && number != "127") return false;
    }
    return numbers == 4;
}

void TryUrl(quillocommon::Url const& url) {
    FUZZ_REQUIRE(url.origin == "http://" + url.host || url.origin == "https://" + url.host ||
                 url.origin.starts_with("http://" + url.host + ":") ||
                 url.origin.starts_with("https://" + url.host + ":"));
    FUZZ_REQUIRE(!url.host.empty() && url.target.starts_with('/'));
    for (unsigned char const c : url.origin)
        FUZZ_REQUIRE(c > ' ' && !(c >= 'A' && c <= 'Z'));
    if (url.IsLoopback())
        FUZZ_REQUIRE(url.host == "localhost" || url.host == "[::1]" || IsLoopbackAddress(url.host));

    auto const again = ParseUrl(url.origin + url.target);
    FUZZ_REQUIRE(again && again->origin == url.origin && again->host == url.host);
    FUZZ_REQUIRE(again->target == url.target && !again->hasUser && !again->hasFragment);
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(fuzz::AsText(data, size));
    auto const url = ParseUrl(text);
    if (url) {
        FUZZ_REQUIRE(text.find('\0') == std::string::npos);
        TryUrl(*url);
    }

    std::string const base = "http://127.0.0.1:8080";
    if (auto const led = ParseUrl(text, base + "/v1/uploads")) {
        TryUrl(*led);
        // A token follows a Location to the same origin: no text may lead elsewhere from there.
        if (led->origin == base) FUZZ_REQUIRE(ParseUrl(base + led->target)->origin == base);
    }

    if (quillocommon::SetServiceAddress(text)) {
        auto const address = quillocommon::GetServiceAddress();
        FUZZ_REQUIRE(url && url->origin == address && !url->hasUser);
        FUZZ_REQUIRE(address.starts_with("https:") || url->IsLoopback());
        FUZZ_REQUIRE(quillocommon::SetServiceAddress(address));
        FUZZ_REQUIRE(quillocommon::GetServiceAddress() == address);
        FUZZ_REQUIRE(ParseUrl(quillocommon::UrlAtService("/v1/me"))->origin == address);
    }

    auto const parameters =
        quillocommon::ParseQuery("a=" + quillocommon::PercentEncode(text) + "&b=2");
    FUZZ_REQUIRE(parameters.size() == 2 && parameters[0].second == text);
    return 0;
}
