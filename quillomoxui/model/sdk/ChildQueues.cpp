#include "quillomoxui/model/sdk/ChildQueues.h"

#include <chrono>
#include <utility>

#include "quillosdk/QuilloClient.h"

namespace quillomoxui::model {

namespace {

using std::chrono::seconds;

/// Has `send` issue a request on the shared client and continues its answer on whichever thread
/// brings it. Without a client the request has failed before it began.
template <class Continuation, class Send>
moxcore::async::Future<void> Request(Continuation continuation, Send const& send) {
    auto const client = QuilloCppSdkIntegration::GetQuilloClient();
    if (!client)
        return moxcore::async::Future<void>::CreateFailed(moxcore::config::kUnknownFailure,
                                                          "nobody is signed in", nullptr);
    return send(*client).Then(std::move(continuation));
}

}  // namespace

QuilloCppSdkIntegration::FetchAccountChildrenQueue::FetchAccountChildrenQueue()
    : FetchChildrenQueue(200, seconds(60)) {}

moxcore::async::Future<void> QuilloCppSdkIntegration::FetchAccountChildrenQueue::RequestChildren(
    quillocommon::Guid const& parentID, Continuation continuation) const {
    return Request(std::move(continuation), [&](quillosdk::QuilloClient& client) {
        return client.GetWorkspaces().GetWorkspacesByAccount(
            quillosdk::GetWorkspacesByAccountRequest(parentID));
    });
}

std::vector<quillosdk::Workspace> const&
QuilloCppSdkIntegration::FetchAccountChildrenQueue::GetChildrenList(
    std::shared_ptr<quillosdk::GetWorkspacesByAccountResponse> const& response) const {
    return response->GetWorkspaceList();
}

QuilloCppSdkIntegration::FetchWorkspaceChildrenQueue::FetchWorkspaceChildrenQueue()
    : FetchChildrenQueue(1000, seconds(1)) {}

moxcore::async::Future<void> QuilloCppSdkIntegration::FetchWorkspaceChildrenQueue::RequestChildren(
    quillocommon::Guid const& parentID, Continuation continuation) const {
    return Request(std::move(continuation), [&](quillosdk::QuilloClient& client) {
        return client.GetProjects().GetProjectsByWorkspace(
            quillosdk::GetProjectsByWorkspaceRequest(parentID));
    });
}

std::vector<quillosdk::Project> const&
QuilloCppSdkIntegration::FetchWorkspaceChildrenQueue::GetChildrenList(
    std::shared_ptr<quillosdk::GetProjectsByWorkspaceResponse> const& response) const {
    return response->GetProjectList();
}

QuilloCppSdkIntegration::FetchFolderChildrenQueue::FetchFolderChildrenQueue()
    : FetchChildrenQueue(60, seconds(60)) {}

moxcore::async::Future<void> QuilloCppSdkIntegration::FetchFolderChildrenQueue::RequestChildren(
    quillocommon::Guid const& parentID, Continuation continuation) const {
    return Request(std::move(continuation), [&](quillosdk::QuilloClient& client) {
        return client.GetAssets().GetChildAssets(quillosdk::GetChildAssetsRequest(parentID));
    });
}

std::vector<quillosdk::Asset> const&
QuilloCppSdkIntegration::FetchFolderChildrenQueue::GetChildrenList(
    std::shared_ptr<quillosdk::GetChildAssetsResponse> const& response) const {
    return response->GetChildAssetsObject();
}

}  // namespace quillomoxui::model
