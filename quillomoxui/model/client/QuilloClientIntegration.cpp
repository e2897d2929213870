#include "quillomoxui/model/client/QuilloClientIntegration.h"

#include "quilloclient/QuilloDatastore.h"
#include "quillomoxui/model/client/ClientNodes.h"

namespace quillomoxui::model {

using quillo::QuilloDatastore;

void QuilloClientIntegration::SignOut() {
    QuilloDatastore::GetDatastore({})->SignOutJwt();
    QuilloDatastore::GetDatastore({})->SignOutOAuth2();
}

void QuilloClientIntegration::GetCurrentUser(
    std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback) {
    auto const datastore = QuilloDatastore::GetDatastore({});
    // Never destroyed: it may still be asked for while the process ends.
    static auto const& user = *new auto(datastore->GetCurrentUser());
    // Whoever is handed the user after a sign-out needs a session for its lists all the same.
    datastore->SignIn();
    static_cast<void>(user.Then(
        user.GetExecutor(), [callback](QuilloDatastore::Result<quillo::QuilloUser> const& answer) {
            if (!answer.GetException()) callback(GetUserFromClient(answer.Get()));
        }));
}

std::shared_ptr<QuilloUser> QuilloClientIntegration::GetUserFromClient(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user) {
    return MakeClientNode<QuilloClientUser>(*user);
}

}  // namespace quillomoxui::model
