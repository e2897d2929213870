#pragma once

#include <memory>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Records.h"
#include "quillosdk/ResponseWith.h"

namespace quillosdk {

class Session;

struct GetWorkspacesByAccountRequest {
    explicit GetWorkspacesByAccountRequest(quillocommon::Guid const& accountID)
        : accountID(accountID) {}
    quillocommon::Guid accountID;
};

class GetWorkspacesByAccountResponse : public ResponseWith<std::vector<Workspace>> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] std::vector<Workspace> const& GetWorkspaceList() const { return content; }
};

/// The workspaces of an account. The service's answer reaches the caller as it is, a refusal for
/// too many requests included: pacing is the caller's. An answer that cannot be read fails the
/// future. Answers come on the transport's thread. Any thread.
class QUILLOSERVICES_API Workspaces {
public:
    explicit Workspaces(std::shared_ptr<Session> session);

    moxcore::async::Future<std::shared_ptr<GetWorkspacesByAccountResponse>> GetWorkspacesByAccount(
        GetWorkspacesByAccountRequest const& request);

private:
    std::shared_ptr<Session> session;
};

}  // namespace quillosdk
