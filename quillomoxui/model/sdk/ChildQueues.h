#pragma once

#include <memory>
#include <vector>

#include "quillomoxui/model/sdk/FetchChildrenQueue.h"
#include "quillosdk/Assets.h"
#include "quillosdk/Projects.h"
#include "quillosdk/Workspaces.h"

namespace quillomoxui::model {

// The three kinds of child requests. The service counts each kind apart, so each has a queue of its
// own.

/// The workspaces of accounts.
class QuilloCppSdkIntegration::FetchAccountChildrenQueue final
    : public FetchChildrenQueue<quillosdk::GetWorkspacesByAccountRequest,
                                quillosdk::GetWorkspacesByAccountResponse,
                                std::vector<quillosdk::Workspace>> {
public:
    FetchAccountChildrenQueue();
    moxcore::async::Future<void> RequestChildren(quillocommon::Guid const& parentID,
                                                 Continuation continuation) const override;
    std::vector<quillosdk::Workspace> const& GetChildrenList(
        std::shared_ptr<quillosdk::GetWorkspacesByAccountResponse> const& response) const override;
};

/// The projects of workspaces.
class QuilloCppSdkIntegration::FetchWorkspaceChildrenQueue final
    : public FetchChildrenQueue<quillosdk::GetProjectsByWorkspaceRequest,
                                quillosdk::GetProjectsByWorkspaceResponse,
                                std::vector<quillosdk::Project>> {
public:
    FetchWorkspaceChildrenQueue();
    moxcore::async::Future<void> RequestChildren(quillocommon::Guid const& parentID,
                                                 Continuation continuation) const override;
    std::vector<quillosdk::Project> const& GetChildrenList(
        std::shared_ptr<quillosdk::GetProjectsByWorkspaceResponse> const& response) const override;
};

/// Fetches the contents of folders.
class QuilloCppSdkIntegration::FetchFolderChildrenQueue final
    : public FetchChildrenQueue<quillosdk::GetChildAssetsRequest, quillosdk::GetChildAssetsResponse,
                                std::vector<quillosdk::Asset>> {
public:
    FetchFolderChildrenQueue();
    moxcore::async::Future<void> RequestChildren(quillocommon::Guid const& parentID,
                                                 Continuation continuation) const override;
    std::vector<quillosdk::Asset> const& GetChildrenList(
        std::shared_ptr<quillosdk::GetChildAssetsResponse> const& response) const override;
};

}  // namespace quillomoxui::model
