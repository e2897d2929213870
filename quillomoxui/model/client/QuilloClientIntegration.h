#pragma once

#include <functional>
#include <memory>

#include "moxcore/classref/InterfaceRef.h"

namespace quillo {
class QuilloUser;
}

namespace quillomoxui {

class QuilloUser;

namespace model {

/// The front of the backend on the older client library (ClientBackend.h), by the names that other
/// programs know, and the scope of the classes that fill the location tree from it. Any thread;
/// callbacks come on the datastore's executor.
class QuilloClientIntegration {
public:
    QuilloClientIntegration() = delete;

    // Listener for changes: DatastoreListener.h. The tree's adapters: ClientNodes.h.
    class DatastoreListener;
    class QuilloClientUser;
    class QuilloClientAccount;
    class QuilloClientWorkspace;
    class QuilloClientProject;
    class QuilloClientFolder;
    class QuilloClientFile;
    class QuilloClientVersionStack;

    /// Signs the datastore out, and ends the session, which the other backend may go by as well.
    /// Nodes that there are stay as they are.
    static void SignOut();

    /// Hands a new root of the tree, with the signed-in user's ID and name, to `callback`. The user
    /// is asked for once in the process, and all calls share the answer. Nothing is called when the
    /// request fails; the next call makes it again.
    static void GetCurrentUser(
        std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback);

    /// A new root of the tree for the client library's user. It asks for nothing by itself.
    [[nodiscard]] static std::shared_ptr<QuilloUser> GetUserFromClient(
        moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user);
};

}  // namespace model
}  // namespace quillomoxui
