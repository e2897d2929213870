#pragma once

#include <functional>
#include <memory>
#include <string>

#include "quilloauth/SignInProgress.h"
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

/// The backend on the service's SDK: the application's identity, the one shared client, signing in
/// and out, and the classes that fill the location tree. Static state only, guarded by one lock
/// that is never held across a callback. Any thread; callbacks come on the service's own threads.
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

    // What paces their requests: FetchChildrenQueue.h, ChildQueues.h, WeakSingleton.h.
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
    /// an earlier call and hears true once the client has a token, false when it refuses one and on
    /// sign-out. A sign-in that fails calls nothing, nor does one that a sign-out has overtaken.
    static void SignIn(std::function<void(bool)> const& onLoggedInChanged);

    /// The same; `onProgress` hears how it fares: first, within the call, that the service is
    /// asked, last of all how it has ended (SignInStage::None when it has succeeded, was given up,
    /// or another SignIn has taken its place). On the thread that finds it out, one call at a time;
    /// must not throw and must not sign in or out.
    static void SignIn(std::function<void(bool)> const& onLoggedInChanged,
                       quilloauth::SignInListener const& onProgress);

    /// Has the client go by the session that another backend signs in to: it is there as soon as
    /// that is. Asks nobody to sign in. `onProgress` as for SignIn.
    static void FollowSession(quilloauth::SignInListener const& onProgress);

    /// Gives up the sign-in under way: nobody is signed in by it. Nothing happens when there is
    /// none. Never waits.
    static void CancelSignIn();

    /// Signs out and releases the client, telling the callback of the last SignIn; so does a
    /// sign-out of another backend, since the session is one. Nothing happens when it cannot be
    /// ended.
    static void SignOut();

    /// Hands a new root of the tree, with the signed-in user's ID and name, to `callback`. Nothing
    /// is called when nobody is signed in or the service does not say who.
    static void GetCurrentUser(
        std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback);

    /// The user looks at these folders: of the children that wait to be asked for, theirs are asked
    /// for first, in this order. Folders of another backend do not matter.
    static void FetchFirst(NodeVector<QuilloNode> const& folders);
};

}  // namespace model
}  // namespace quillomoxui
