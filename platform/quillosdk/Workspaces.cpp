#include "quillosdk/Workspaces.h"

#include <utility>

#include "quillosdk/AnswerReader.h"
#include "quillosdk/Deliver.h"
#include "quillosdk/PathTo.h"
#include "quillosdk/Session.h"

namespace quillosdk {

Workspaces::Workspaces(std::shared_ptr<Session> session) : session(std::move(session)) {}

moxcore::async::Future<std::shared_ptr<GetWorkspacesByAccountResponse>>
Workspaces::GetWorkspacesByAccount(GetWorkspacesByAccountRequest const& request) {
    return Fetch<GetWorkspacesByAccountResponse>(
        *session,
        {.method = "GET", .url = PathTo("/v1/accounts/", request.accountID, "/workspaces")},
        {quillocommon::Step::ReadLocations, "read the workspaces of an account", true},
        &ReadWorkspaces);
}

}  // namespace quillosdk
