#include "service/SignInPage.h"

#include <string_view>

#include "service/HtmlPage.h"
#include "service/RedirectUri.h"
#include "service/Text.h"

namespace quilloservice::signinpage {

namespace {

constexpr std::string_view kStyle = R"css(
:root { color-scheme: light dark; --page: #f4f5f7; --card: #fff; --text: #1b1e24; --quiet: #5b6472;
  --line: #8b93a0; --accent: #3056c8; --on-accent: #fff; --error: #b3261e; }
@media (prefers-color-scheme: dark) {
  :root { --page: #131519; --card: #1c1f25; --text: #e9ebef; --quiet: #9aa3b2; --line: #6c7585;
    --accent: #8aa8ff; --on-accent: #10131a; --error: #ff9c93; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text);
  font: 16px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
main { max-width: 27rem; margin: 12vh auto 2rem; padding: 2rem; background: var(--card);
  border-radius: 12px; overflow-wrap: anywhere; }
h1 { margin: 0; font-size: 1.5rem; line-height: 1.25; }
p { margin: .75rem 0 0; }
label { display: block; margin: 1.25rem 0 .25rem; font-weight: 600; }
select, input, button { width: 100%; padding: .6rem .75rem; font: inherit; color: inherit;
  background: var(--card); border: 1px solid var(--line); border-radius: 8px; }
[aria-invalid] { border-color: var(--error); }
.error { color: var(--error); margin-top: .25rem; }
.quiet { color: var(--quiet); font-size: .9rem; }
.buttons { display: flex; gap: .75rem; margin-top: 1.5rem; }
.allow { background: var(--accent); border-color: var(--accent); color: var(--on-accent);
  font-weight: 600; }
:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
@media (max-width: 30rem) { main { margin: 0; min-height: 100vh; border-radius: 0; padding: 1.25rem; } }
)css";

constexpr std::string_view kPolicyEnd = "; base-uri 'none'; frame-ancestors 'none'; form-action ";

std::string Policy(const std::string& formAction) {
    static const std::string source = htmlpage::PolicySource(kStyle);
    return "default-src 'none'; style-src " + source + std::string(kPolicyEnd) + formAction;
}

std::string Page(const std::string& heading, const std::string& body) {
    return htmlpage::Document(heading, kStyle,
                              "<main>\n<h1>" + heading + "</h1>\n" + body + "</main>\n");
}

std::string Hidden(const char* name, const std::string& value) {
    return std::string("<input type=\"hidden\" name=\"") + name + "\" value=\"" +
           EscapeHtml(value) + "\">\n";
}

std::string Choice(const Form& form) {
    std::string html =
        "<label for=\"user\">Sign in as</label>\n<select id=\"user\" name=\"user\" "
        "autocomplete=\"username\">\n";
    for (const User& user : form.users) {
        html += "<option value=\"" + EscapeHtml(user.id) + "\"" +
                (user.id == form.chosen ? " selected" : "") + ">" + EscapeHtml(user.name) +
                "</option>\n";
    }
    return html + "</select>\n";
}

std::string Password(bool wrong) {
    std::string html =
        "<label for=\"password\">Password</label>\n<input id=\"password\" name=\"password\" "
        "type=\"password\" autocomplete=\"current-password\" required autofocus";
    if (!wrong) return html + ">\n";
    return html +
           " aria-invalid=\"true\" aria-describedby=\"wrong\">\n<p class=\"error\" id=\"wrong\" "
           "role=\"alert\">This is not the password. Try again.</p>\n";
}

}  // namespace

std::string FormPolicy(const AuthorizationRequest& request) {
    // Browsers hold the redirect after the form to this as well.
    return Policy("'self' " + FormActionSource(request.redirectUri));
}

std::string RenderForm(const Form& form) {
    const AuthorizationRequest& request = form.request;
    std::string body =
        "<p><bdi>" + EscapeHtml(request.client) +
        "</bdi>, a program on this computer, wants to share movies for review in your name.</p>\n"
        "<form method=\"post\" action=\"/oauth/authorize\">\n";
    body += Hidden("client_id", request.client) + Hidden("redirect_uri", request.redirectUri) +
            Hidden("response_type", "code") + Hidden("state", request.state) +
            Hidden("code_challenge", request.challenge) + Hidden("code_challenge_method", "S256") +
            Hidden("form_token", form.token);
    body += Choice(form) + Password(form.wrongPassword);
    body +=
        "<div class=\"buttons\">\n"
        "<button class=\"allow\" name=\"decision\" value=\"allow\">Allow</button>\n"
        "<button name=\"decision\" value=\"deny\" formnovalidate>Deny</button>\n</div>\n</form>\n"
        "<p class=\"quiet\">This is a service for development: its documentation tells the sample "
        "users\xE2\x80\x99 password.</p>\n";
    return Page("Sign in to Quillo", body);
}

std::string RefusalPolicy() {
    return Policy("'none'");
}

std::string RenderRefusal(const std::string& reason) {
    return Page("The sign-in cannot go on",
                "<p>" + EscapeHtml(reason) +
                    "</p>\n<p class=\"quiet\">Close this page, go back to the program that opened "
                    "it and sign in again.</p>\n");
}

}  // namespace quilloservice::signinpage
