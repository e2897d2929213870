#include "service/pages/AdminPage.h"

#include "service/pages/HtmlPage.h"
#include "service/pages/resources/Texts.h"

namespace quilloservice::adminpage {

namespace {

std::string const& Style() {
    static std::string const style =
        htmlpage::Style(std::string(resources::kFormCss) + std::string(resources::kAdminCss));
    return style;
}

}  // namespace

std::string SecurityPolicy() {
    static std::string const policy =
        htmlpage::Policy(Style(), "connect-src 'self'; form-action 'none'; script-src " +
                                      htmlpage::PolicySource(resources::kAdminJs));
    return policy;
}

std::string Render() {
    std::string body(resources::kAdminHtml);
    body += "<script>";
    body += resources::kAdminJs;
    body += "</script>\n";
    return htmlpage::Document("Locations of this service", Style(), body);
}

}  // namespace quilloservice::adminpage
