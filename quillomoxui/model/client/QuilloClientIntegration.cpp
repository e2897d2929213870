#include "quillomoxui/model/client/QuilloClientIntegration.h"

#include "quillomoxui/model/client/ClientBackend.h"
#include "quillomoxui/model/client/ClientNodes.h"

namespace quillomoxui::model {

void QuilloClientIntegration::SignOut() {
    ClientBackend::Instance().SignOut();
}

void QuilloClientIntegration::GetCurrentUser(
    std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback) {
    ClientBackend::Instance().GetCurrentUser(callback);
}

std::shared_ptr<QuilloUser> QuilloClientIntegration::GetUserFromClient(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user) {
    return MakeClientNode<QuilloClientUser>(*user);
}

}  // namespace quillomoxui::model
