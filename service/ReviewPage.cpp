#include "service/ReviewPage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <vector>

#include "service/HtmlPage.h"
#include "service/ReviewLinks.h"
#include "service/Text.h"

namespace quilloservice::reviewpage {

namespace {

constexpr std::string_view kStyle = R"css(
:root { color-scheme: light dark; --page: #f4f5f7; --card: #fff; --text: #1b1e24; --quiet: #5b6472;
  --line: #dde1e7; --accent: #3056c8; --on-accent: #fff; }
@media (prefers-color-scheme: dark) {
  :root { --page: #131519; --card: #1c1f25; --text: #e9ebef; --quiet: #9aa3b2; --line: #2e333c;
    --accent: #8aa8ff; --on-accent: #10131a; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text);
  font: 16px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
header, main { max-width: 68rem; margin: 0 auto; padding: 0 1.25rem; }
header { padding-top: 2rem; padding-bottom: 1.25rem; }
main { padding-bottom: 3rem; }
h1, h2, p { margin: 0; overflow-wrap: anywhere; }
h1 { font-size: 1.6rem; line-height: 1.25; }
h2 { font-size: 1.1rem; }
.quiet { color: var(--quiet); font-size: .9rem; }
.label { color: var(--quiet); font-size: .8rem; text-transform: uppercase; letter-spacing: .08em; }
.card { background: var(--card); border: 1px solid var(--line); border-radius: 12px;
  overflow: hidden; margin-bottom: 1.75rem; }
video { display: block; width: 100%; aspect-ratio: 16 / 9; max-height: 75vh; background: #000; }
.details { display: flex; flex-wrap: wrap; gap: .75rem 1.25rem; align-items: center;
  padding: 1rem 1.25rem; }
.details > div { flex: 1 1 16rem; min-width: 0; }
.versions { display: flex; flex-wrap: wrap; gap: .5rem; align-items: center;
  border-top: 1px solid var(--line); padding: .8rem 1.25rem; }
a { color: var(--accent); }
.pill { display: inline-block; padding: .35rem .9rem; border: 1px solid var(--line);
  border-radius: 999px; text-decoration: none; font-size: .9rem; white-space: nowrap; }
.pill:hover { border-color: var(--accent); }
.pill[aria-current], .download { background: var(--accent); color: var(--on-accent);
  border-color: var(--accent); }
:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
.empty { padding: 4rem 1.5rem; text-align: center; }
.empty p { margin-top: .5rem; }
@media (max-width: 34rem) {
  header, main { padding-left: .75rem; padding-right: .75rem; }
  header { padding-top: 1.25rem; }
  h1 { font-size: 1.3rem; }
  .card { border-radius: 10px; }
  .details, .versions { padding-left: .9rem; padding-right: .9rem; }
}
)css";

std::string Page(std::string_view title, std::string_view body) {
    return htmlpage::Document(title, kStyle, body);
}

std::string Size(std::int64_t bytes) {
    constexpr std::array<const char*, 5> units = {"bytes", "kB", "MB", "GB", "TB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; size >= 999.5 && unit + 1 < units.size(); ++unit)
        size /= 1000;
    char text[32];
    std::snprintf(text, sizeof(text), unit == 0 || size >= 99.95 ? "%.0f %s" : "%.1f %s", size,
                  units[unit]);
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

std::string Title(const std::string& name) {
    return "<bdi>" + EscapeHtml(name) + "</bdi>";
}

std::string Versions(const ReviewContent& content, const std::vector<MovieVersion>& versions,
                     const MovieVersion& shown, const std::string& anchor) {
    std::string html =
        "<nav class=\"versions\" aria-label=\"Versions\">\n"
        "<span class=\"label\">Versions</span>\n";
    for (const MovieVersion& version : versions) {
        html += "<a class=\"pill\"";
        if (version.asset == shown.asset) html += " aria-current=\"true\"";
        html += " href=\"/r/" + content.id + "?v=" + version.asset + "#" + anchor + "\">Version " +
                std::to_string(version.version);
        if (&version == &versions.front()) html += " (newest)";
        html += "</a>\n";
    }
    return html + "</nav>\n";
}

std::string Movie(const ReviewContent& content, const std::vector<MovieVersion>& versions,
                  const std::string& chosenAsset, std::size_t index) {
    auto chosen = std::find_if(versions.begin(), versions.end(), [&](const MovieVersion& version) {
        return version.asset == chosenAsset;
    });
    const MovieVersion& shown = chosen == versions.end() ? versions.front() : *chosen;
    std::string address = "/r/" + content.id + "/assets/" + shown.asset;
    std::string anchor = "movie-" + std::to_string(index + 1);
    std::string html = "<section class=\"card\" id=\"" + anchor + "\">\n";
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

std::string Notice(std::string_view heading, std::string_view text) {
    std::string html = "<section class=\"card empty\"><h2>";
    html += heading;
    html += "</h2>\n<p class=\"quiet\">";
    html += text;
    return html + "</p></section>\n";
}

}  // namespace

std::string SecurityPolicy() {
    static const std::string policy =
        "default-src 'none'; media-src 'self'; style-src " + htmlpage::PolicySource(kStyle) +
        "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
    return policy;
}

std::string Render(const ReviewContent& content, const std::string& chosenAsset) {
    std::string body = "<header>\n<p class=\"label\">For review</p>\n<h1>" + Title(content.name) +
                       "</h1>\n</header>\n<main>\n";
    if (content.movies.empty()) {
        body += Notice("Nothing to watch yet",
                       "No movie has been shared under this link so far. Reload the page later.");
    }
    for (std::size_t i = 0; i < content.movies.size(); ++i) {
        body += Movie(content, content.movies[i], chosenAsset, i);
    }
    return Page(content.name, body + "</main>\n");
}

std::string RenderNotFound() {
    return Page("Not found",
                "<header></header>\n<main>\n" +
                    Notice("There is nothing here",
                           "This link does not lead to a movie. Check that it was copied "
                           "whole, or ask whoever sent it for a new one.") +
                    "</main>\n");
}

}  // namespace quilloservice::reviewpage
