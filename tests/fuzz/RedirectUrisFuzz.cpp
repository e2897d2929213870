// The redirect URI of a sign-in: one that is accepted is on this machine for libcurl, too, and
// stays there with the answer's parameters.

#include <curl/curl.h>

#include <memory>
#include <string>

#include "service/oauth/RedirectUri.h"
#include "tests/fuzz/Fuzz.h"

namespace {

/// A part of the URL as libcurl has it, empty when it has none.
std::string Part(CURLU* url, CURLUPart part) {
    char* text = nullptr;
    if (curl_url_get(url, part, &text, CURLU_URLDECODE) != CURLUE_OK) return {};
    std::unique_ptr<char, decltype(&curl_free)> const owner(text, &curl_free);
    return text;
}

void RequireLoopback(std::string const& uri, std::string const& query) {
    std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> const url(curl_url(), &curl_url_cleanup);
    FUZZ_REQUIRE(curl_url_set(url.get(), CURLUPART_URL, uri.c_str(), 0) == CURLUE_OK);
    auto const host = Part(url.get(), CURLUPART_HOST);
    FUZZ_REQUIRE(Part(url.get(), CURLUPART_SCHEME) == "http");
    FUZZ_REQUIRE(host == "127.0.0.1" || host == "[::1]");
    FUZZ_REQUIRE(Part(url.get(), CURLUPART_USER).empty());
    FUZZ_REQUIRE(Part(url.get(), CURLUPART_FRAGMENT).empty());
    char* text = nullptr;
    if (query.empty()) return;
    FUZZ_REQUIRE(curl_url_get(url.get(), CURLUPART_QUERY, &text, 0) == CURLUE_OK);
    std::unique_ptr<char, decltype(&curl_free)> const owner(text, &curl_free);
    FUZZ_REQUIRE(std::string_view(text).ends_with(query));
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto input = fuzz::AsText(data, size);
    std::string const uri(fuzz::TakeLine(input));
    if (!quilloservice::IsLoopbackRedirect(uri)) return 0;
    RequireLoopback(uri, {});

    auto const answer =
        quilloservice::WithParameters(uri, {{"code", "1"}, {"state", std::string(input)}});
    RequireLoopback(answer, {});
    FUZZ_REQUIRE(answer.starts_with(uri));
    auto const added = answer.substr(uri.size());
    FUZZ_REQUIRE(added.starts_with("?code=1&state=") || added.starts_with("&code=1&state="));
    RequireLoopback(answer, added.substr(1));

    // Stands in a header, between the other sources of a policy.
    for (char const c : quilloservice::FormActionSource(uri))
        FUZZ_REQUIRE(c > ' ' && c < 0x7F && c != ';' && c != ',' && c != '\'');
    return 0;
}
