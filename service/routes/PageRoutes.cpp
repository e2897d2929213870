#include <string_view>

#include "service/base/ApiError.h"
#include "service/oauth/RedirectUri.h"
#include "service/pages/AdminPage.h"
#include "service/pages/StartPage.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/LocalCaller.h"
#include "service/routes/Routes.h"

namespace quilloservice {

namespace {

constexpr std::string_view kLocalName = "localhost";

bool IsNamed(std::string const& host) {
    return host.starts_with(kLocalName);
}

/// The page's URL as a redirect URI for the sign-in: with an address instead of the name localhost.
std::string AddressOfPage(Call const& call, std::string host) {
    bool isIpv6 = call.request.remoteAddress == "::1";
    if (IsNamed(host)) host.replace(0, kLocalName.size(), isIpv6 ? "[::1]" : "127.0.0.1");
    return "http://" + host + "/admin";
}

void ShowPage(Call& call) {
    // The page holds a token, so it is isolated from pages of other origins.
    call.response.SetHeader("Cache-Control", "no-store");
    call.response.SetHeader("Cross-Origin-Resource-Policy", "same-origin");
    call.response.SetHeader("Cross-Origin-Opener-Policy", "same-origin");
    std::string host = call.request.host;
    std::string address = AddressOfPage(call, host);
    if (!IsLocalProgram(call) || !IsLoopbackRedirect(address)) {
        throw ApiError(403, "forbidden",
                       "This page is shown on the service's own machine only, under "
                       "http://127.0.0.1, http://[::1] or http://localhost and its port.");
    }
    if (IsNamed(host)) return call.response.Redirect(302, address);
    call.RespondWithPage(200, adminpage::Render(), adminpage::SecurityPolicy());
}

}  // namespace

void AddPageRoutes(Api& api) {
    api.Add({"GET", "/", [](Call& call) {
                 call.RespondWithPage(200, startpage::Render(IsLocalProgram(call)),
                                      startpage::SecurityPolicy());
             }});
    api.Add({"GET", "/admin", ShowPage});
}

}  // namespace quilloservice
