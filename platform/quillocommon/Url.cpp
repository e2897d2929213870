#include "quillocommon/Url.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace quillocommon {
namespace {

struct CurlDeleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
    void operator()(char* text) const { curl_free(text); }
};
using CurlText = std::unique_ptr<char, CurlDeleter>;

std::optional<std::string> Part(CURLU* url, CURLUPart part, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return std::nullopt;
    return std::string(CurlText(text).get());
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

}  // namespace

bool Url::IsLoopback() const {
    return host == "localhost" || host == "[::1]" || host.starts_with("127.");
}

std::optional<Url> ParseUrl(std::string const& text, std::string const& base) {
    std::unique_ptr<CURLU, CurlDeleter> const url(curl_url());
    if (!url) return std::nullopt;
    if (!base.empty() && curl_url_set(url.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK)
        return std::nullopt;
    if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) return std::nullopt;

    auto const scheme = Part(url.get(), CURLUPART_SCHEME);
    auto const host = Part(url.get(), CURLUPART_HOST);
    auto const path = Part(url.get(), CURLUPART_PATH);
    if ((scheme != "http" && scheme != "https") || !host || !path) return std::nullopt;

    Url parts;
    parts.host = LowerCase(*host);
    parts.origin = *scheme + "://" + parts.host;
    if (auto const port = Part(url.get(), CURLUPART_PORT, CURLU_NO_DEFAULT_PORT))
        parts.origin += ":" + *port;
    auto const query = Part(url.get(), CURLUPART_QUERY);
    parts.target = *path + (query ? "?" + *query : "");
    parts.hasUser = Part(url.get(), CURLUPART_USER) || Part(url.get(), CURLUPART_PASSWORD);
    parts.hasQuery = query.has_value();
    parts.hasFragment = Part(url.get(), CURLUPART_FRAGMENT).has_value();
    return parts;
}

std::string PercentEncode(std::string const& text) {
    if (text.empty()) return {};  // length 0 would mean "up to the terminator" below
    CurlText const encoded(curl_easy_escape(nullptr, text.c_str(), static_cast<int>(text.size())));
    return encoded ? encoded.get() : "";
}

}  // namespace quillocommon
