#include "service/pages/SignInPage.h"

#include <string_view>

#include "service/base/Text.h"
#include "service/oauth/RedirectUri.h"
#include "service/pages/HtmlPage.h"
#include "service/pages/resources/Texts.h"

namespace quilloservice::signinpage {

namespace {

constexpr std::string_view kWrong = " aria-invalid=\"true\" aria-describedby=\"wrong\"";

std::string const& Style() {
    static std::string const style = htmlpage::Style(resources::kFormCss);
    return style;
}

std::string Page(std::string const& heading, std::string const& body) {
    return htmlpage::Document(
        heading, Style(), "<main class=\"card\">\n<h1>" + heading + "</h1>\n" + body + "</main>\n");
}

std::string Hidden(char const* name, std::string const& value) {
    return std::string("<input type=\"hidden\" name=\"") + name + "\" value=\"" +
           EscapeHtml(value) + "\">\n";
}

std::string UserField(Form const& form) {
    std::string html =
        "<label for=\"user\">User name</label>\n<input id=\"user\" name=\"user\" list=\"users\" "
        "autocomplete=\"username\" spellcheck=\"false\" required value=\"" +
        EscapeHtml(form.user) + "\"" + std::string(form.wrong ? kWrong : "") +
        ">\n<datalist id=\"users\">\n";
    for (std::string const& user : form.users)
        html += "<option value=\"" + EscapeHtml(user) + "\"></option>\n";
    return html + "</datalist>\n";
}

std::string PasswordField(bool wrong) {
    std::string html =
        "<label for=\"password\">Password</label>\n<input id=\"password\" name=\"password\" "
        "type=\"password\" autocomplete=\"current-password\" required autofocus";
    if (!wrong) return html + ">\n";
    return html + std::string(kWrong) +
           ">\n<p class=\"error\" id=\"wrong\" role=\"alert\">There is no such user, or this is "
           "not the password. Try again.</p>\n";
}

/// The users' names, joined with commas and "and".
std::string ListNames(std::vector<std::string> const& users) {
    std::string text;
    for (std::size_t i = 0; i < users.size(); ++i) {
        if (i > 0) text += i + 1 == users.size() ? " and " : ", ";
        text += "<bdi>" + EscapeHtml(users[i]) + "</bdi>";
    }
    return text;
}

}  // namespace

std::string FormPolicy(AuthorizationRequest const& request) {
    // Browsers also apply form-action to the redirect after the form.
    return htmlpage::Policy(Style(), "form-action 'self' " + FormActionSource(request.redirectUri));
}

std::string RenderForm(Form const& form) {
    AuthorizationRequest const& request = form.request;
    std::string body = "<p><bdi>" + EscapeHtml(request.client.GetText()) +
                       "</bdi>, a program on this computer, wants to see and change your "
                       "projects and to share movies for review in your name.</p>\n"
                       "<form method=\"post\" action=\"/oauth/authorize\">\n";
    body += Hidden("client_id", request.client.GetText()) +
            Hidden("redirect_uri", request.redirectUri) + Hidden("response_type", "code") +
            Hidden("state", request.state) + Hidden("code_challenge", request.challenge) +
            Hidden("code_challenge_method", "S256") + Hidden("form_token", form.token);
    body += UserField(form) + PasswordField(form.wrong);
    body +=
        "<div class=\"buttons\">\n"
        "<button class=\"primary\" name=\"decision\" value=\"allow\">Allow</button>\n"
        "<button name=\"decision\" value=\"deny\" formnovalidate>Deny</button>\n</div>\n</form>\n"
        "<p class=\"quiet\">This is a service for development. Its sample users are " +
        ListNames(form.users) + "; the password is in its documentation.</p>\n";
    return Page("Sign in to Quillo", body);
}

std::string RefusalPolicy() {
    return htmlpage::Policy(Style(), "form-action 'none'");
}

std::string RenderRefusal(std::string const& reason) {
    return Page("The sign-in cannot go on",
                "<p>" + EscapeHtml(reason) +
                    "</p>\n<p class=\"quiet\">Close this page, go back to the program that opened "
                    "it and sign in again.</p>\n");
}

}  // namespace quilloservice::signinpage
