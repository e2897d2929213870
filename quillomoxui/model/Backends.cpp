#include "quillomoxui/model/Backends.h"

#include "moxcore/debug/DebugDatabase.h"
#include "quillomoxui/model/client/ClientBackend.h"
#include "quillomoxui/model/client/QuilloClientIntegration.h"
#include "quillomoxui/model/sdk/SdkBackend.h"

namespace quillomoxui::model {

Backend const& ChosenBackend() {
    // Named here instead of registering themselves: a registration would depend on the order in
    // which statics are initialised.
    if (moxcore::debug::DebugDatabase::Instance().GetEntryAs<bool>("QuilloNative.UseQuilloCppSdk",
                                                                   true))
        return SdkBackend::Instance();
    return ClientBackend::Instance();
}

std::shared_ptr<QuilloUser> GetUserFromClient(
    moxcore::classref::InterfaceRef<quillo::QuilloUser> const& user) {
    return QuilloClientIntegration::GetUserFromClient(user);
}

}  // namespace quillomoxui::model
