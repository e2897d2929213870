#include "quillomoxui/model/client/ClientBackend.h"

#include <mutex>
#include <optional>

#include "moxcore/utility/NoDestructor.h"
#include "quilloclient/QuilloDatastore.h"
#include "quillomoxui/model/client/QuilloClientIntegration.h"
#include "quillomoxui/model/sdk/SdkBackend.h"

namespace quillomoxui::model {

using quillo::QuilloDatastore;

namespace {

using UserResult = QuilloDatastore::Result<quillo::QuilloUser>;

/// The request for the user, which is made once of a datastore. One that has failed is made again
/// the next time: a sign-in that was denied in the browser must not be the last.
UserResult RequestUser(std::shared_ptr<QuilloDatastore> const& datastore) {
    struct Request {
        std::mutex mutex;
        std::weak_ptr<QuilloDatastore> datastore;  // guarded by mutex, as is what it has answered
        std::optional<UserResult> user;
    };
    // Never destroyed: it may still be asked for while the process ends.
    static moxcore::utility::NoDestructor<Request> request;
    std::lock_guard lock(request->mutex);
    bool const isMade = request->user && request->datastore.lock() == datastore;
    if (isMade && !(request->user->IsComplete() && request->user->GetException())) {
        // After a sign-out this user still needs a session for its lists.
        datastore->SignIn();
    } else {
        request->datastore = datastore;
        request->user = datastore->GetCurrentUser();
    }
    return *request->user;
}

}  // namespace

ClientBackend const& ClientBackend::Instance() {
    static constinit ClientBackend const instance{};
    return instance;
}

void ClientBackend::SignIn(LoggedInCallback const&,
                           quilloauth::SignInListener const& onProgress) const {
    SdkBackend::FollowSession(onProgress);
}

void ClientBackend::CancelSignIn() const {
    // The session has one sign-in at a time, which both backends wait for.
    SdkBackend::Instance().CancelSignIn();
}

void ClientBackend::SignOut() const {
    QuilloDatastore::GetDatastore({})->SignOutJwt();
    QuilloDatastore::GetDatastore({})->SignOutOAuth2();
}

void ClientBackend::GetCurrentUser(UserCallback const& callback) const {
    auto const user = RequestUser(QuilloDatastore::GetDatastore({}));
    static_cast<void>(user.Then(user.GetExecutor(), [callback](UserResult const& answer) {
        if (!answer.GetException())
            callback(QuilloClientIntegration::GetUserFromClient(answer.Get()));
    }));
}

void ClientBackend::FetchFirst(NodeVector<QuilloNode> const&) const {}

}  // namespace quillomoxui::model
