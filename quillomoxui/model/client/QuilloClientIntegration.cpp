#include "quillomoxui/model/client/QuilloClientIntegration.h"

#include <mutex>
#include <optional>

#include "moxcore/utility/NoDestructor.h"
#include "quilloclient/QuilloDatastore.h"
#include "quillomoxui/model/client/ClientNodes.h"

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
        // Whoever is handed the user after a sign-out needs a session for its lists all the same.
        datastore->SignIn();
    } else {
        request->datastore = datastore;
        request->user = datastore->GetCurrentUser();
    }
    return *request->user;
}

}  // namespace

void QuilloClientIntegration::SignOut() {
    QuilloDatastore::GetDatastore({})->SignOutJwt();
    QuilloDatastore::GetDatastore({})->SignOutOAuth2();
}

void QuilloClientIntegration::GetCurrentUser(
    std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback) {
    auto const user = RequestUser(QuilloDatastore::GetDatastore({}));
    static_cast<void>(user.Then(user.GetExecutor(), [callback](UserResult const& answer) {
        if (!answer.GetException()) callback(GetUserFromClient(answer.Get()));
    }));
}

std::shared_ptr<QuilloUser> QuilloClientIntegration::GetUserFromClient(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user) {
    return MakeClientNode<QuilloClientUser>(*user);
}

}  // namespace quillomoxui::model
