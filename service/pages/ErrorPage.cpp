#include "service/pages/ErrorPage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "service/base/Text.h"
#include "service/http/Request.h"
#include "service/pages/HtmlPage.h"

namespace quilloservice::errorpage {

namespace {

/// Removes the first element from a list separated by semicolons and returns it, trimmed.
std::string_view TakeElement(std::string_view& list) {
    std::size_t end = std::min(list.find(';'), list.size());
    std::string_view element = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    element.remove_prefix(std::min(element.find_first_not_of(" \t"), element.size()));
    return element.substr(0, element.find_last_not_of(" \t") + 1);
}

/// The weight in the parameters of a media range (RFC 9110, section 12.4.2); 0 if malformed.
double Weight(std::string_view parameters) {
    while (!parameters.empty()) {
        std::string_view parameter = TakeElement(parameters);
        if (!http::EqualsIgnoringCase(parameter.substr(0, 2), "q=")) continue;
        double weight = 0;
        std::from_chars(parameter.data() + 2, parameter.data() + parameter.size(), weight);
        return weight;
    }
    return 1;
}

/// The weight of a media type: that of the most specific matching range (RFC 9110, section 12.5.1).
double Preference(std::string_view accept, std::string_view type) {
    std::string const anyOfKind = std::string(type.substr(0, type.find('/'))) + "/*";
    std::array<std::string_view, 3> const fitting = {"*/*", anyOfKind, type};
    std::size_t best = 0;
    double weight = 0;
    for (std::string_view parameters : http::ListElements(accept)) {
        std::string_view range = TakeElement(parameters);
        for (std::size_t i = best; i < fitting.size(); ++i) {
            if (!http::EqualsIgnoringCase(range, fitting[i])) continue;
            best = i + 1;
            weight = Weight(parameters);
        }
    }
    return weight;
}

char const* Heading(int status) {
    switch (status) {
        case 403:
            return "This is not allowed";
        case 404:
            return "There is nothing here";
        case 405:
            return "This cannot be done here";
        case 429:
            return "Too many requests";
        case 503:
            return "The service is busy";
        default:
            return status >= 500 ? "The service failed" : "The request was refused";
    }
}

std::string const& Style() {
    static std::string const style = htmlpage::Style();
    return style;
}

}  // namespace

bool IsOffered(std::string_view path) {
    return path != "/v1" && !path.starts_with("/v1/") && path != "/oauth/token" &&
           path != "/oauth/revoke";
}

bool IsWanted(std::string_view accept) {
    return Preference(accept, "text/html") > Preference(accept, "application/json");
}

std::string SecurityPolicy() {
    static std::string const policy = htmlpage::Policy(Style(), "form-action 'none'");
    return policy;
}

std::string Render(int status, std::string_view message) {
    std::string heading = Heading(status);
    return htmlpage::Document(
        heading, Style(),
        "<main class=\"card\">\n<h1>" + heading + "</h1>\n<p>" + EscapeHtml(message) +
            "</p>\n<p class=\"quiet\">Error " + std::to_string(status) +
            " \xC2\xB7 <a href=\"/\">Start page of the service</a></p>\n</main>\n");
}

}  // namespace quilloservice::errorpage
