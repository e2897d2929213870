#pragma once

#include <memory>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFile.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloVersionStack.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillosdk/Accounts.h"
#include "quillosdk/Records.h"

namespace quillomoxui::model {

// The nodes of the location tree as the SDK fills them: each is made of the service's record, asks
// the service for its children, and replaces all of them with new nodes at every answer. A request
// that fails leaves the node as it was, still fetching; FetchChildren asks again. Answers come on
// the service's own threads, for nodes that still exist.

class QuilloCppSdkIntegration::QuilloSdkUser final : public QuilloUser {
public:
    explicit QuilloSdkUser(quillosdk::User const& record);
    void FetchChildren() override;

private:
    using AccountListFuture =
        moxcore::async::Future<std::shared_ptr<quillosdk::GetCurrentUserAccountListResponse>>;
    void GetCurrentUserAccountListCompletion(AccountListFuture const& answer);
};

/// Asks through the queue of its kind, which it keeps alive.
class QuilloCppSdkIntegration::QuilloSdkAccount final : public QuilloAccount {
public:
    QuilloSdkAccount(quillosdk::Account const& record, std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;

private:
    void ReceiveChildWorkspaces(std::vector<quillosdk::Workspace> const& records);

    std::shared_ptr<FetchAccountChildrenQueue> const queue;
};

/// Asks through the queue of its kind, which it keeps alive.
class QuilloCppSdkIntegration::QuilloSdkWorkspace final : public QuilloWorkspace {
public:
    QuilloSdkWorkspace(quillosdk::Workspace const& record,
                       std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;

private:
    void ReceiveChildProjects(std::vector<quillosdk::Project> const& records);

    std::shared_ptr<FetchWorkspaceChildrenQueue> const queue;
};

/// Comes with its root folder, so there is nothing to ask for.
class QuilloCppSdkIntegration::QuilloSdkProject final : public QuilloProject {
public:
    QuilloSdkProject(quillosdk::Project const& record, std::shared_ptr<QuilloNode> const& parent);
};

/// Asks through the queue of its kind, which it keeps alive.
class QuilloCppSdkIntegration::QuilloSdkFolder final : public QuilloFolder {
public:
    QuilloSdkFolder(quillosdk::Asset const& record, std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;

private:
    void ReceiveChildAssets(std::vector<quillosdk::Asset> const& records);

    std::shared_ptr<FetchFolderChildrenQueue> const queue;
};

class QuilloCppSdkIntegration::QuilloSdkFile final : public QuilloFile {
public:
    QuilloSdkFile(quillosdk::Asset const& record, std::shared_ptr<QuilloNode> const& parent);
};

class QuilloCppSdkIntegration::QuilloSdkVersionStack final : public QuilloVersionStack {
public:
    QuilloSdkVersionStack(quillosdk::Asset const& record,
                          std::shared_ptr<QuilloNode> const& parent);
};

}  // namespace quillomoxui::model
