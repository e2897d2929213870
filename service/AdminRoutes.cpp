#include "service/AdminPage.h"
#include "service/Api.h"
#include "service/Call.h"
#include "service/LocalCaller.h"
#include "service/Routes.h"
#include "service/SampleData.h"
#include "service/Sessions.h"

namespace quilloservice {

void AddAdminRoutes(Api& api, Sessions& sessions, bool trustLocalUser) {
    api.Add({"GET", "/admin", [&sessions, trustLocalUser](Call& call) {
                 // It holds a token: nobody else is to read it, from here or from a cache.
                 call.response.SetHeader("Cache-Control", "no-store");
                 call.response.SetHeader("Cross-Origin-Resource-Policy", "same-origin");
                 call.response.SetHeader("Cross-Origin-Opener-Policy", "same-origin");
                 if (!trustLocalUser || !IsLocalProgram(call)) {
                     return call.AnswerPage(403, adminpage::RenderRefused(),
                                            adminpage::SecurityPolicy());
                 }
                 std::string token = sessions.SignIn(SampleUserId(), "admin-page").access;
                 call.AnswerPage(200, adminpage::Render(token), adminpage::SecurityPolicy());
             }});
}

}  // namespace quilloservice
