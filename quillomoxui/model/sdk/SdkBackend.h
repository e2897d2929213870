#pragma once

#include <memory>
#include <string>

#include "quillomoxui/model/Backend.h"

namespace quillosdk {
class QuilloClient;
}

namespace quillomoxui::model {

/// The backend on the service's SDK. Also holds the one SDK client, with which uploads and review
/// links work whatever backend is chosen. Its state is one for the process, guarded by one lock
/// that is never held across a callback.
class SdkBackend final : public Backend {
public:
    [[nodiscard]] static SdkBackend const& Instance();

    [[nodiscard]] bool HasSignInStep() const override { return true; }
    void SignIn(LoggedInCallback const& onLoggedInChanged,
                quilloauth::SignInListener const& onProgress) const override;
    void CancelSignIn() const override;

    /// Releases the client, too. A session that cannot be ended stays as it is.
    void SignOut() const override;

    /// Asks the service at each call.
    void GetCurrentUser(UserCallback const& callback) const override;
    void FetchFirst(NodeVector<QuilloNode> const& folders) const override;

    /// Makes a client of the session that another backend opens, as soon as there is one. Starts no
    /// sign-in. `onProgress` as for SignIn.
    static void FollowSession(quilloauth::SignInListener const& onProgress);

    /// The shared client; null while nobody is signed in.
    [[nodiscard]] static std::shared_ptr<quillosdk::QuilloClient> GetClient();

    static void SetClientID(std::string const& clientID);
    static void SetRedirectURI(std::string const& redirectURI);
};

}  // namespace quillomoxui::model
