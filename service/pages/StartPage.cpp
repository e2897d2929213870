#include "service/pages/StartPage.h"

#include "service/pages/HtmlPage.h"

namespace quilloservice::startpage {

namespace {

std::string const& Style() {
    static std::string const style = htmlpage::Style();
    return style;
}

}  // namespace

std::string SecurityPolicy() {
    static std::string const policy = htmlpage::Policy(Style(), "form-action 'none'");
    return policy;
}

std::string Render(bool showsLocations) {
    std::string body =
        "<main class=\"card\">\n<h1>Quillo review service</h1>\n"
        "<p>Video editors share movies for review here. To watch one, open the link that you "
        "were sent.</p>\n";
    if (showsLocations) {
        body +=
            "<p>On this computer you can also see and change the accounts, projects and folders: "
            "<a href=\"/admin\">Locations of this service</a></p>\n";
    }
    body += "<p class=\"quiet\">This is a service for development and tests.</p>\n</main>\n";
    return htmlpage::Document("Quillo review service", Style(), body);
}

}  // namespace quilloservice::startpage
