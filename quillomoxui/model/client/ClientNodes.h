#pragma once

#include <memory>
#include <utility>

#include "moxcore/messaging/Message.h"
#include "quilloclient/QuilloDatastore.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFile.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloVersionStack.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/model/client/DatastoreListener.h"

namespace quillomoxui::model {

// The nodes of the location tree as the client library's datastore fills them. FetchChildren asks
// the datastore; the answer replaces all children with new nodes, on the datastore's executor, and
// from the first answer on the node asks again whenever the datastore says that its list has
// changed. A request that fails leaves the node as it was, still fetching. Make them with
// MakeClientNode.

/// A node that stops listening before its destructor begins, on whatever thread its last owner lets
/// go of it: a message that comes meanwhile finds the whole node, or is not delivered.
template <class Node, class... Arguments>
[[nodiscard]] std::shared_ptr<Node> MakeClientNode(Arguments&&... arguments) {
    return std::shared_ptr<Node>(new Node(std::forward<Arguments>(arguments)...), [](Node* node) {
        node->StopListening();
        delete node;
    });
}

class QuilloClientIntegration::QuilloClientUser final : public QuilloUser,
                                                        public DatastoreListener {
public:
    explicit QuilloClientUser(quillo::QuilloUser const& entry);
    void FetchChildren() override;
    void ListenToMessage(moxcore::messaging::Message const& message) override;

private:
    void ReceiveAccounts(quillo::QuilloDatastore::Result<quillo::QuilloAccountList> const& answer);
};

class QuilloClientIntegration::QuilloClientAccount final : public QuilloAccount,
                                                           public DatastoreListener {
public:
    QuilloClientAccount(quillo::QuilloAccount const& entry,
                        std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;
    void ListenToMessage(moxcore::messaging::Message const& message) override;

private:
    void ReceiveTeams(quillo::QuilloDatastore::Result<quillo::QuilloTeamList> const& answer);
};

/// A team of the client library's.
class QuilloClientIntegration::QuilloClientWorkspace final : public QuilloWorkspace,
                                                             public DatastoreListener {
public:
    QuilloClientWorkspace(quillo::QuilloTeam const& entry,
                          std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;
    void ListenToMessage(moxcore::messaging::Message const& message) override;

private:
    void ReceiveProjects(quillo::QuilloDatastore::Result<quillo::QuilloProjectList> const& answer);
};

/// Comes with its root folder: there is nothing to ask for, and its fetch state does not change.
class QuilloClientIntegration::QuilloClientProject final : public QuilloProject,
                                                           public DatastoreListener {
public:
    QuilloClientProject(quillo::QuilloProject const& entry,
                        std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;
};

class QuilloClientIntegration::QuilloClientFolder final : public QuilloFolder,
                                                          public DatastoreListener {
public:
    QuilloClientFolder(quillo::QuilloAsset const& entry, std::shared_ptr<QuilloNode> const& parent);

    /// A project's root folder, which has no name.
    QuilloClientFolder(moxcore::utility::Guid const& rootAssetID,
                       std::shared_ptr<QuilloNode> const& parent);
    void FetchChildren() override;
    void ListenToMessage(moxcore::messaging::Message const& message) override;

private:
    void ReceiveAssets(quillo::QuilloDatastore::Result<quillo::QuilloAssetList> const& answer);
};

class QuilloClientIntegration::QuilloClientFile final : public QuilloFile,
                                                        public DatastoreListener {
public:
    QuilloClientFile(quillo::QuilloAsset const& entry, std::shared_ptr<QuilloNode> const& parent);
};

class QuilloClientIntegration::QuilloClientVersionStack final : public QuilloVersionStack,
                                                                public DatastoreListener {
public:
    QuilloClientVersionStack(quillo::QuilloAsset const& entry,
                             std::shared_ptr<QuilloNode> const& parent);
};

}  // namespace quillomoxui::model
