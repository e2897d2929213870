#include "quillocommon/Url.h"

#include <arpa/inet.h>
#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <sstream>

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

/// Whether `origin` leads to `host` when it is read anew: what curl has decoded in it may come to
/// something else the second time. An international name is written in its ASCII form.
bool LeadsTo(std::string const& origin, std::string const& host) {
    if (std::any_of(host.begin(), host.end(),
                    [](unsigned char c) { return c <= ' ' || c >= 0x7F; }))
        return false;
    std::unique_ptr<CURLU, CurlDeleter> const url(curl_url());
    return url && curl_url_set(url.get(), CURLUPART_URL, origin.c_str(), 0) == CURLUE_OK &&
           Part(url.get(), CURLUPART_HOST) == host;
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

/// A part of a query without its "+" and "%20".
std::string Decode(std::string text) {
    std::replace(text.begin(), text.end(), '+', ' ');
    int size = 0;
    CurlText const decoded(
        curl_easy_unescape(nullptr, text.c_str(), static_cast<int>(text.size()), &size));
    return decoded ? std::string(decoded.get(), static_cast<std::size_t>(size)) : std::string();
}

}  // namespace

bool Url::IsLoopback() const {
    if (host == "localhost" || host == "[::1]") return true;
    // A name may begin with "127." as well.
    in_addr address{};
    return host.starts_with("127.") && inet_pton(AF_INET, host.c_str(), &address) == 1;
}

std::optional<Url> ParseUrl(std::string const& text, std::string const& base) {
    if (text.find('\0') != std::string::npos) return std::nullopt;  // curl would read up to it
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
    if (!LeadsTo(parts.origin, parts.host)) return std::nullopt;
    auto const query = Part(url.get(), CURLUPART_QUERY);
    parts.target = *path + (query ? "?" + *query : "");
    parts.hasUser = Part(url.get(), CURLUPART_USER) || Part(url.get(), CURLUPART_PASSWORD);
    parts.hasQuery = query.has_value();
    parts.hasFragment = Part(url.get(), CURLUPART_FRAGMENT).has_value();
    return parts;
}

std::vector<std::pair<std::string, std::string>> ParseQuery(std::string const& query) {
    std::vector<std::pair<std::string, std::string>> parameters;
    std::istringstream parts(query);
    for (std::string part; std::getline(parts, part, '&');) {
        auto const sign = std::min(part.find('='), part.size());
        parameters.emplace_back(Decode(part.substr(0, sign)),
                                Decode(part.substr(std::min(sign + 1, part.size()))));
    }
    return parameters;
}

std::string PercentEncode(std::string const& text) {
    if (text.empty()) return {};  // length 0 would mean "up to the terminator" below
    CurlText const encoded(curl_easy_escape(nullptr, text.c_str(), static_cast<int>(text.size())));
    return encoded ? encoded.get() : "";
}

}  // namespace quillocommon
