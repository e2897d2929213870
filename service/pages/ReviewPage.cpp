#include "service/pages/ReviewPage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <vector>

#include "service/base/Text.h"
#include "service/pages/HtmlPage.h"
#include "service/pages/resources/Texts.h"
#include "service/store/ReviewLinks.h"

namespace quilloservice::reviewpage {

namespace {

std::string const& Style() {
    static std::string const style = htmlpage::Style(resources::kReviewCss);
    return style;
}

std::string Page(std::string_view title, std::string_view body) {
    return htmlpage::Document(title, Style(), body);
}

std::string Size(std::int64_t bytes) {
    constexpr std::array<char const*, 5> kUnits = {"bytes", "kB", "MB", "GB", "TB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; size >= 999.5 && unit + 1 < kUnits.size(); ++unit)
        size /= 1000;
    char text[32];
    std::snprintf(text, sizeof(text), unit == 0 || size >= 99.95 ? "%.0f %s" : "%.1f %s", size,
                  kUnits[unit]);
    return text;
}

std::string Date(std::int64_t seconds) {
    auto time = static_cast<std::time_t>(seconds);
    std::tm utc{};
    ::gmtime_r(&time, &utc);
    char text[64];
    std::strftime(text, sizeof(text), "%e %B %Y, %H:%M UTC", &utc);
    return text[0] == ' ' ? text + 1 : text;
}

std::string Title(std::string const& name) {
    return "<bdi>" + EscapeHtml(name) + "</bdi>";
}

std::string Versions(ReviewContent const& content, std::vector<MovieVersion> const& versions,
                     MovieVersion const& shown, std::string const& anchor) {
    std::string html =
        "<nav class=\"versions\" aria-label=\"Versions\">\n"
        "<span class=\"label\">Versions</span>\n";
    for (MovieVersion const& version : versions) {
        html += "<a class=\"pill\"";
        if (version.asset == shown.asset) html += " aria-current=\"true\"";
        html += " href=\"/r/" + content.id.GetText() + "?v=" + version.asset.GetText() + "#" +
                anchor + "\">Version " + std::to_string(version.version);
        if (&version == &versions.front()) html += " (newest)";
        html += "</a>\n";
    }
    return html + "</nav>\n";
}

std::string Movie(ReviewContent const& content, std::vector<MovieVersion> const& versions,
                  FileId const& chosenAsset, std::size_t index) {
    auto chosen = std::find_if(versions.begin(), versions.end(), [&](MovieVersion const& version) {
        return version.asset == chosenAsset;
    });
    MovieVersion const& shown = chosen == versions.end() ? versions.front() : *chosen;
    std::string address = "/r/" + content.id.GetText() + "/assets/" + shown.asset.GetText();
    std::string anchor = "movie-" + std::to_string(index + 1);
    std::string html = "<section id=\"" + anchor + "\">\n";
    html += "<video controls preload=\"metadata\" playsinline src=\"" + address +
            "\" aria-label=\"" + EscapeHtml(shown.name) +
            "\">Your browser cannot play this movie; " + "download it instead.</video>\n";
    html += "<div class=\"details\"><div><h2>" + Title(shown.name) + "</h2>\n<p class=\"quiet\">";
    if (versions.size() > 1) html += "Version " + std::to_string(shown.version) + " · ";
    html += Size(shown.bytes) + " · " + Date(shown.publishedAt) + "</p></div>\n";
    html += "<a class=\"pill download\" href=\"" + address +
            "?download=1\" download>Download</a>"
            "</div>\n";
    if (versions.size() > 1) html += Versions(content, versions, shown, anchor);
    return html + "</section>\n";
}

}  // namespace

std::string SecurityPolicy() {
    static std::string const policy =
        htmlpage::Policy(Style(), "media-src 'self'; form-action 'none'");
    return policy;
}

std::string Render(ReviewContent const& content, FileId const& chosen) {
    std::string body = "<header>\n<p class=\"label\">For review</p>\n<h1>" + Title(content.name) +
                       "</h1>\n</header>\n<main>\n";
    if (content.movies.empty()) {
        body +=
            "<section class=\"empty\"><h2>Nothing to watch yet</h2>\n<p class=\"quiet\">No movie "
            "has "
            "been shared under this link so far. Reload the page later.</p></section>\n";
    }
    for (std::size_t i = 0; i < content.movies.size(); ++i) {
        body += Movie(content, content.movies[i], chosen, i);
    }
    return Page(content.name, body + "</main>\n");
}

}  // namespace quilloservice::reviewpage
