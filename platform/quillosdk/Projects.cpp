#include "quillosdk/Projects.h"

#include <utility>

#include "quillosdk/AnswerReader.h"
#include "quillosdk/Deliver.h"
#include "quillosdk/PathTo.h"
#include "quillosdk/Session.h"

namespace quillosdk {

Projects::Projects(std::shared_ptr<Session> session) : session(std::move(session)) {}

moxcore::async::Future<std::shared_ptr<GetProjectsByWorkspaceResponse>>
Projects::GetProjectsByWorkspace(GetProjectsByWorkspaceRequest const& request) {
    return Fetch<GetProjectsByWorkspaceResponse>(
        *session,
        {.method = "GET", .url = PathTo("/v1/workspaces/", request.workspaceID, "/projects")},
        {quillocommon::Step::ReadLocations, "read the projects of a workspace", true},
        &ReadProjects);
}

}  // namespace quillosdk
