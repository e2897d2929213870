#include "quillomoxui/model/sdk/SdkNodes.h"

#include "moxcore/config/Error.h"
#include "quillomoxui/model/TreeLimits.h"
#include "quillomoxui/model/sdk/ChildQueues.h"
#include "quillomoxui/model/sdk/GuidConversions.h"
#include "quillomoxui/model/sdk/WeakSingleton.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"
#include "quillosdk/QuilloClient.h"

namespace quillomoxui::model {

namespace {

void Initialize(QuilloNode& node, quillocommon::Guid const& id, std::string const& name) {
    node.SetInitialIdentity(FromServiceGuid(id), NameForTree(name));
}

void Initialize(QuilloNode& node, quillosdk::Asset const& record) {
    Initialize(node, record.id.value_or(quillocommon::Guid()), record.name);
}

/// A weak reference to `self`, for answers that it may not live to see.
template <class Node>
std::weak_ptr<Node> Weak(Node* self) {
    return self->Share(self);
}

}  // namespace

QuilloCppSdkIntegration::QuilloSdkUser::QuilloSdkUser(quillosdk::User const& record) {
    Initialize(*this, record.id, record.name);
}

void QuilloCppSdkIntegration::QuilloSdkUser::FetchChildren() {
    QuilloUser::FetchChildren();
    auto const client = GetQuilloClient();
    if (!client) return;
    static_cast<void>(
        client->GetAccounts().GetCurrentUserAccountList({}).Then(utility::WeakBindMemberFunction(
            Weak(this), &QuilloSdkUser::GetCurrentUserAccountListCompletion)));
}

void QuilloCppSdkIntegration::QuilloSdkUser::GetCurrentUserAccountListCompletion(
    AccountListFuture const& answer) {
    if (moxcore::config::ExtractResultFromException(answer.GetException()) < 0) return;
    auto const response = answer.Get();
    if (!response->IsSuccessful()) return;
    auto const self = Share(this);
    NodeVector<QuilloAccount> accounts;
    for (auto const& record : response->GetCurrentUserAccountListObject())
        accounts.push_back(std::make_shared<QuilloSdkAccount>(record, self));
    SetAccounts(accounts);
    SetFetchChildrenState(FetchChildrenState::Fetched);
}

QuilloCppSdkIntegration::QuilloSdkAccount::QuilloSdkAccount(
    quillosdk::Account const& record, std::shared_ptr<QuilloNode> const& parent)
    : QuilloAccount(parent), queue(WeakSingleton<FetchAccountChildrenQueue>::Instance()) {
    Initialize(*this, record.id, record.name);
}

void QuilloCppSdkIntegration::QuilloSdkAccount::FetchChildren() {
    QuilloAccount::FetchChildren();
    queue->Push(Share(this), utility::WeakBindMemberFunction(
                                 Weak(this), &QuilloSdkAccount::ReceiveChildWorkspaces));
}

void QuilloCppSdkIntegration::QuilloSdkAccount::ReceiveChildWorkspaces(
    std::vector<quillosdk::Workspace> const& records) {
    auto const self = Share(this);
    NodeVector<QuilloWorkspace> workspaces;
    workspaces.reserve(records.size());
    for (auto const& record : records)
        workspaces.push_back(std::make_shared<QuilloSdkWorkspace>(record, self));
    SetWorkspaces(workspaces);
    SetFetchChildrenState(FetchChildrenState::Fetched);
}

QuilloCppSdkIntegration::QuilloSdkWorkspace::QuilloSdkWorkspace(
    quillosdk::Workspace const& record, std::shared_ptr<QuilloNode> const& parent)
    : QuilloWorkspace(parent), queue(WeakSingleton<FetchWorkspaceChildrenQueue>::Instance()) {
    Initialize(*this, record.id, record.name);
}

void QuilloCppSdkIntegration::QuilloSdkWorkspace::FetchChildren() {
    QuilloWorkspace::FetchChildren();
    queue->Push(Share(this), utility::WeakBindMemberFunction(
                                 Weak(this), &QuilloSdkWorkspace::ReceiveChildProjects));
}

void QuilloCppSdkIntegration::QuilloSdkWorkspace::ReceiveChildProjects(
    std::vector<quillosdk::Project> const& records) {
    auto const self = Share(this);
    NodeVector<QuilloProject> projects;
    projects.reserve(records.size());
    for (auto const& record : records) {
        auto project = std::make_shared<QuilloSdkProject>(record, self);
        project->SetRootFolder(std::make_shared<QuilloSdkFolder>(record.rootAsset, project));
        projects.push_back(std::move(project));
    }
    SetProjects(projects);
    SetFetchChildrenState(FetchChildrenState::Fetched);
}

QuilloCppSdkIntegration::QuilloSdkProject::QuilloSdkProject(
    quillosdk::Project const& record, std::shared_ptr<QuilloNode> const& parent)
    : QuilloProject(parent) {
    Initialize(*this, record.id, record.name);
}

QuilloCppSdkIntegration::QuilloSdkFolder::QuilloSdkFolder(quillosdk::Asset const& record,
                                                          std::shared_ptr<QuilloNode> const& parent)
    : QuilloFolder(parent), queue(WeakSingleton<FetchFolderChildrenQueue>::Instance()) {
    Initialize(*this, record);
}

void QuilloCppSdkIntegration::QuilloSdkFolder::FetchChildren() {
    QuilloFolder::FetchChildren();
    queue->Push(Share(this),
                utility::WeakBindMemberFunction(Weak(this), &QuilloSdkFolder::ReceiveChildAssets));
}

void QuilloCppSdkIntegration::QuilloSdkFolder::ReceiveChildAssets(
    std::vector<quillosdk::Asset> const& records) {
    auto const self = Share(this);
    FolderFilter filter(*this);
    NodeVector<QuilloFolder> folders;
    NodeVector<QuilloFile> files;
    NodeVector<QuilloVersionStack> versionStacks;
    for (auto const& record : records) {
        if (record.type == "folder") {
            if (filter.Admits(FromServiceGuid(record.id.value_or(quillocommon::Guid()))))
                folders.push_back(std::make_shared<QuilloSdkFolder>(record, self));
        } else if (record.type == "file") {
            files.push_back(std::make_shared<QuilloSdkFile>(record, self));
        } else if (record.type == "version_stack") {
            versionStacks.push_back(std::make_shared<QuilloSdkVersionStack>(record, self));
        }
    }
    SetFolders(folders);
    SetFiles(files);
    SetVersionStacks(versionStacks);
    SetFetchChildrenState(FetchChildrenState::Fetched);
    filter.Report();
}

QuilloCppSdkIntegration::QuilloSdkFile::QuilloSdkFile(quillosdk::Asset const& record,
                                                      std::shared_ptr<QuilloNode> const& parent)
    : QuilloFile(parent) {
    Initialize(*this, record);
}

QuilloCppSdkIntegration::QuilloSdkVersionStack::QuilloSdkVersionStack(
    quillosdk::Asset const& record, std::shared_ptr<QuilloNode> const& parent)
    : QuilloVersionStack(parent) {
    Initialize(*this, record);
}

}  // namespace quillomoxui::model
