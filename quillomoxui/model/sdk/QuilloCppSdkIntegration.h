#pragma once

#include <functional>
#include <memory>
#include <string>

#include "quillomoxui/Export.h"
#include "quillomoxui/model/QuilloNode.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillosdk {
class QuilloClient;
}

namespace quillomoxui {

class QuilloUser;

/// Names the application to the service: its OAuth client ID and redirect URI. Call once, before
/// any sign-in. Nothing happens when either is empty. Main thread.
QUILLO_API void InitQuilloCppSdk(UTF16String const& clientID, UTF16String const& redirectURI);

namespace model {

/// The front of the backend on the service's SDK (SdkBackend.h), by the names that other programs
/// know, and the scope of the classes that fill the location tree from it. Any thread; callbacks
/// come on the service's own threads.
class QuilloCppSdkIntegration {
public:
    QuilloCppSdkIntegration() = delete;

    // The tree's adapters: SdkNodes.h.
    class QuilloSdkUser;
    class QuilloSdkAccount;
    class QuilloSdkWorkspace;
    class QuilloSdkProject;
    class QuilloSdkFolder;
    class QuilloSdkFile;
    class QuilloSdkVersionStack;

    // The queues that pace their requests: FetchChildrenQueue.h, ChildQueues.h, WeakSingleton.h.
    template <class Request, class Response, class ChildVector>
    class FetchChildrenQueue;
    class FetchAccountChildrenQueue;
    class FetchWorkspaceChildrenQueue;
    class FetchFolderChildrenQueue;
    template <class Queue>
    class WeakSingleton;

    /// The OAuth client ID of the next sign-in. Hosts call InitQuilloCppSdk.
    static void SetClientID(std::string const& clientID);
    /// The OAuth redirect URI of the next sign-in. Hosts call InitQuilloCppSdk.
    static void SetRedirectURI(std::string const& redirectURI);

    /// The shared client; null while nobody is signed in.
    [[nodiscard]] static std::shared_ptr<quillosdk::QuilloClient> GetQuilloClient();

    /// Signs in, with the token there is or interactively. `onLoggedInChanged` replaces the one of
    /// an earlier call: true once the client has a token, false when it refuses one and on
    /// sign-out. A sign-in that fails calls nothing, nor does one that a sign-out has overtaken.
    static void SignIn(std::function<void(bool)> const& onLoggedInChanged);

    /// Signs out and releases the client, telling the callback of the last SignIn; so does a
    /// sign-out of another backend, since the session is one. Nothing happens when it cannot be
    /// ended.
    static void SignOut();

    /// Hands a new root of the tree, with the signed-in user's ID and name, to `callback`. Nothing
    /// is called when nobody is signed in or the service does not say who.
    static void GetCurrentUser(
        std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback);
};

}  // namespace model
}  // namespace quillomoxui
