#include "quilloauth/ReturnPage.h"

#include "quillocommon/resources/Texts.h"
#include "quillosdk/Sha256.h"

namespace quilloauth {
namespace {

/// Lets through the style sheet, by its checksum, and nothing else.
std::string MakePolicy() {
    quillosdk::Sha256 checksum;
    checksum.Update(std::string(quillocommon::resources::kPageCss));
    return "default-src 'none'; style-src 'sha256-" + quillosdk::Base64(checksum.Finish()) +
           "'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

}  // namespace

std::string RenderAnswer(ReturnPage const& page) {
    static std::string const policy = MakePolicy();
    std::string const body =
        std::string("<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n") +
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
        page.heading + "</title>\n<style>" + std::string(quillocommon::resources::kPageCss) +
        "</style>\n</head>\n<body>\n<main class=\"card\">\n<h1>" + page.heading + "</h1>\n<p>" +
        page.text + "</p>\n</main>\n</body>\n</html>\n";
    return "HTTP/1.1 " + std::to_string(page.status) +
           " \r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
           std::to_string(body.size()) +
           "\r\nConnection: close\r\nCache-Control: no-store\r\nReferrer-Policy: no-referrer\r\n"
           "X-Content-Type-Options: nosniff\r\nX-Frame-Options: DENY\r\n"
           "Content-Security-Policy: " +
           policy + "\r\n\r\n" + body;
}

}  // namespace quilloauth
