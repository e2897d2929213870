#pragma once

#include <memory>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Records.h"
#include "quillosdk/ResponseWith.h"

namespace quillosdk {

class Session;

struct GetProjectsByWorkspaceRequest {
    explicit GetProjectsByWorkspaceRequest(quillocommon::Guid const& workspaceID)
        : workspaceID(workspaceID) {}
    quillocommon::Guid workspaceID;
};

class GetProjectsByWorkspaceResponse : public ResponseWith<std::vector<Project>> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] std::vector<Project> const& GetProjectList() const { return content; }
};

/// The projects of a workspace. The service's answer reaches the caller as it is, a refusal for too
/// many requests included: pacing is the caller's. An answer that cannot be read fails the future.
/// Answers come on the transport's thread. Any thread.
class QUILLOSERVICES_API Projects {
public:
    explicit Projects(std::shared_ptr<Session> session);

    moxcore::async::Future<std::shared_ptr<GetProjectsByWorkspaceResponse>> GetProjectsByWorkspace(
        GetProjectsByWorkspaceRequest const& request);

private:
    std::shared_ptr<Session> session;
};

}  // namespace quillosdk
