#include "quillomoxui/model/client/ClientNodes.h"

#include "quillomoxui/model/TreeLimits.h"
#include "quillomoxui/utility/WeakBindMemberFunction.h"

namespace quillomoxui::model {

using moxcore::messaging::HashMessageTypeNameToMessageID;
using moxcore::messaging::Message;
using moxcore::messaging::MessageID;
using quillo::QuilloDatastore;

namespace {

template <class Entry>
void Initialize(QuilloNode& node, Entry const& entry) {
    node.SetInitialIdentity(entry.GetID(), NameForTree(entry.GetName()));
}

std::shared_ptr<QuilloDatastore> Datastore() {
    return QuilloDatastore::GetDatastore({});
}

/// Has `receive` called with the answer on the answer's executor, if `self` is still there by then.
template <class Node, class List>
void OnAnswer(Node* self, QuilloDatastore::Result<List> const& answer,
              void (Node::*receive)(QuilloDatastore::Result<List> const&)) {
    static_cast<void>(answer.Then(
        answer.GetExecutor(),
        utility::WeakBindMemberFunction(std::weak_ptr<Node>(self->Share(self)), receive)));
}

template <class Type>
MessageID IDOf() {
    static MessageID const id = HashMessageTypeNameToMessageID(Type::kTypeName);
    return id;
}

/// Has `node` fetch its children, unless its last owner has let go of it: it is about to be
/// destroyed, and waits for this call to end.
void FetchAgain(QuilloNode& node) {
    if (auto const alive = node.weak_from_this().lock()) node.FetchChildren();
}

/// The same, if the message is of the type and for this very node.
template <class Type>
void FetchAgainOn(Message const& message, QuilloNode& node) {
    if (message.GetTypeID() == IDOf<Type>() && message.GetGuid() == node.GetID()) FetchAgain(node);
}

}  // namespace

QuilloClientIntegration::QuilloClientUser::QuilloClientUser(quillo::QuilloUser const& entry) {
    Initialize(*this, entry);
}

void QuilloClientIntegration::QuilloClientUser::FetchChildren() {
    QuilloUser::FetchChildren();
    OnAnswer(this, Datastore()->GetAccountList(), &QuilloClientUser::ReceiveAccounts);
}

void QuilloClientIntegration::QuilloClientUser::ReceiveAccounts(
    QuilloDatastore::Result<quillo::QuilloAccountList> const& answer) {
    if (answer.GetException()) return;
    auto const list = answer.Get();
    auto const self = Share(this);
    NodeVector<QuilloAccount> accounts;
    for (std::size_t i = 0; i < list->GetCount(); ++i)
        if (auto const entry = list->GetAccount(i))
            accounts.push_back(MakeClientNode<QuilloClientAccount>(*entry, self));
    SetAccounts(accounts);
    SetFetchChildrenState(FetchChildrenState::Fetched);
    BeginListening();
}

void QuilloClientIntegration::QuilloClientUser::ListenToMessage(Message const& message) {
    if (message.GetTypeID() == IDOf<QuilloDatastore::AccountListChanged>()) FetchAgain(*this);
}

QuilloClientIntegration::QuilloClientAccount::QuilloClientAccount(
    quillo::QuilloAccount const& entry, std::shared_ptr<QuilloNode> const& parent)
    : QuilloAccount(parent) {
    Initialize(*this, entry);
}

void QuilloClientIntegration::QuilloClientAccount::FetchChildren() {
    QuilloAccount::FetchChildren();
    OnAnswer(this, Datastore()->GetTeamList(GetID()), &QuilloClientAccount::ReceiveTeams);
}

void QuilloClientIntegration::QuilloClientAccount::ReceiveTeams(
    QuilloDatastore::Result<quillo::QuilloTeamList> const& answer) {
    if (answer.GetException()) return;
    auto const list = answer.Get();
    auto const self = Share(this);
    NodeVector<QuilloWorkspace> workspaces;
    for (std::size_t i = 0; i < list->GetCount(); ++i)
        if (auto const entry = list->GetTeam(i))
            workspaces.push_back(MakeClientNode<QuilloClientWorkspace>(*entry, self));
    SetWorkspaces(workspaces);
    SetFetchChildrenState(FetchChildrenState::Fetched);
    BeginListening();
}

void QuilloClientIntegration::QuilloClientAccount::ListenToMessage(Message const& message) {
    FetchAgainOn<QuilloDatastore::TeamListChanged>(message, *this);
}

QuilloClientIntegration::QuilloClientWorkspace::QuilloClientWorkspace(
    quillo::QuilloTeam const& entry, std::shared_ptr<QuilloNode> const& parent)
    : QuilloWorkspace(parent) {
    Initialize(*this, entry);
}

void QuilloClientIntegration::QuilloClientWorkspace::FetchChildren() {
    QuilloWorkspace::FetchChildren();
    OnAnswer(this, Datastore()->GetProjectList(GetID()), &QuilloClientWorkspace::ReceiveProjects);
}

void QuilloClientIntegration::QuilloClientWorkspace::ReceiveProjects(
    QuilloDatastore::Result<quillo::QuilloProjectList> const& answer) {
    if (answer.GetException()) return;
    auto const list = answer.Get();
    auto const self = Share(this);
    NodeVector<QuilloProject> projects;
    for (std::size_t i = 0; i < list->GetCount(); ++i) {
        auto const entry = list->GetProject(i);
        if (!entry) continue;
        auto project = MakeClientNode<QuilloClientProject>(*entry, self);
        project->SetRootFolder(
            MakeClientNode<QuilloClientFolder>(entry->GetRootAssetID(), project));
        projects.push_back(std::move(project));
    }
    SetProjects(projects);
    SetFetchChildrenState(FetchChildrenState::Fetched);
    BeginListening();
}

void QuilloClientIntegration::QuilloClientWorkspace::ListenToMessage(Message const& message) {
    FetchAgainOn<QuilloDatastore::ProjectListChanged>(message, *this);
}

QuilloClientIntegration::QuilloClientProject::QuilloClientProject(
    quillo::QuilloProject const& entry, std::shared_ptr<QuilloNode> const& parent)
    : QuilloProject(parent) {
    Initialize(*this, entry);
}

void QuilloClientIntegration::QuilloClientProject::FetchChildren() {}

QuilloClientIntegration::QuilloClientFolder::QuilloClientFolder(
    quillo::QuilloAsset const& entry, std::shared_ptr<QuilloNode> const& parent)
    : QuilloFolder(parent) {
    Initialize(*this, entry);
}

QuilloClientIntegration::QuilloClientFolder::QuilloClientFolder(
    moxcore::utility::Guid const& rootAssetID, std::shared_ptr<QuilloNode> const& parent)
    : QuilloFolder(parent) {
    SetInitialID(rootAssetID);
}

void QuilloClientIntegration::QuilloClientFolder::FetchChildren() {
    QuilloFolder::FetchChildren();
    OnAnswer(this, Datastore()->GetAssetList(GetID()), &QuilloClientFolder::ReceiveAssets);
}

void QuilloClientIntegration::QuilloClientFolder::ReceiveAssets(
    QuilloDatastore::Result<quillo::QuilloAssetList> const& answer) {
    if (answer.GetException()) return;
    auto const list = answer.Get();
    auto const self = Share(this);
    FolderFilter filter(*this);
    NodeVector<QuilloFolder> folders;
    NodeVector<QuilloFile> files;
    NodeVector<QuilloVersionStack> versionStacks;
    for (std::size_t i = 0; i < list->GetCount(); ++i) {
        auto const entry = list->GetAsset(i);
        if (!entry) continue;
        auto const& type = entry->GetType();
        if (type == quillo::QuilloAsset::kFolder) {
            if (filter.Admits(entry->GetID()))
                folders.push_back(MakeClientNode<QuilloClientFolder>(*entry, self));
        } else if (type == quillo::QuilloAsset::kFile) {
            files.push_back(MakeClientNode<QuilloClientFile>(*entry, self));
        } else if (type == quillo::QuilloAsset::kVersionStack) {
            versionStacks.push_back(MakeClientNode<QuilloClientVersionStack>(*entry, self));
        }
    }
    SetFolders(folders);
    SetFiles(files);
    SetVersionStacks(versionStacks);
    SetFetchChildrenState(FetchChildrenState::Fetched);
    BeginListening();
    filter.Report();
}

void QuilloClientIntegration::QuilloClientFolder::ListenToMessage(Message const& message) {
    FetchAgainOn<QuilloDatastore::AssetListChanged>(message, *this);
}

QuilloClientIntegration::QuilloClientFile::QuilloClientFile(
    quillo::QuilloAsset const& entry, std::shared_ptr<QuilloNode> const& parent)
    : QuilloFile(parent) {
    Initialize(*this, entry);
}

QuilloClientIntegration::QuilloClientVersionStack::QuilloClientVersionStack(
    quillo::QuilloAsset const& entry, std::shared_ptr<QuilloNode> const& parent)
    : QuilloVersionStack(parent) {
    Initialize(*this, entry);
}

}  // namespace quillomoxui::model
