#include "service/pages/HtmlPage.h"

#include <openssl/evp.h>

#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/pages/resources/Texts.h"

namespace quilloservice::htmlpage {

std::string Style(std::string_view own) {
    std::string style(resources::kPageCss);
    return style += own;
}

std::string Document(std::string_view title, std::string_view style, std::string_view body) {
    std::string page =
        "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"robots\" content=\"noindex\">\n<title>";
    page += EscapeHtml(title);
    page += "</title>\n<style>";
    page += style;
    page += "</style>\n</head>\n<body>\n";
    page += body;
    page += "</body>\n</html>\n";
    return page;
}

std::string Policy(std::string_view style, std::string_view allowed) {
    std::string policy = "default-src 'none'; style-src " + PolicySource(style) +
                         "; base-uri 'none'; frame-ancestors 'none'; ";
    return policy += allowed;
}

std::string PolicySource(std::string_view source) {
    std::string hash = Sha256(source);
    unsigned char base64[64];
    EVP_EncodeBlock(base64, reinterpret_cast<unsigned char const*>(hash.data()),
                    static_cast<int>(hash.size()));
    return std::string("'sha256-") + reinterpret_cast<char const*>(base64) + "'";
}

}  // namespace quilloservice::htmlpage
