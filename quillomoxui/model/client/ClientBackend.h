#pragma once

#include "quillomoxui/model/Backend.h"

namespace quillomoxui::model {

/// The backend on the older client library: the datastore holds the sign-in and the lists, and its
/// nodes follow the changes of the service.
class ClientBackend final : public Backend {
public:
    [[nodiscard]] static ClientBackend const& Instance();

    /// The datastore opens the session by itself, for the user that it is asked for.
    [[nodiscard]] bool HasSignInStep() const override { return false; }

    /// Has the SDK's client follow the session of the datastore, since uploads and review links
    /// need that client.
    void SignIn(LoggedInCallback const& onLoggedInChanged,
                quilloauth::SignInListener const& onProgress) const override;
    void CancelSignIn() const override;
    void SignOut() const override;

    /// The datastore is asked for the user once in the process; after a failure, the next call asks
    /// again.
    void GetCurrentUser(UserCallback const& callback) const override;

    /// Does nothing: the datastore sends each request at once.
    void FetchFirst(NodeVector<QuilloNode> const& folders) const override;
};

}  // namespace quillomoxui::model
