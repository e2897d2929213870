#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

#include "moxcore/string/Conversions.h"
#include "quilloauth/AuthManager.h"
#include "quillomoxui/model/sdk/SdkBackend.h"

namespace quillomoxui {

void InitQuilloCppSdk(UTF16String const& clientID, UTF16String const& redirectURI) {
    using moxcore::string::UTF16toStdString;
    if (clientID.empty() || redirectURI.empty()) return;
    std::string const client = UTF16toStdString(clientID);
    std::string const redirect = UTF16toStdString(redirectURI);
    model::QuilloCppSdkIntegration::SetClientID(client);
    model::QuilloCppSdkIntegration::SetRedirectURI(redirect);
    quilloauth::jwt::InitializeAuthManager(client, redirect, quillosdk::EnvironmentType::Production,
                                           {});
}

namespace model {

void QuilloCppSdkIntegration::SetClientID(std::string const& clientID) {
    SdkBackend::SetClientID(clientID);
}

void QuilloCppSdkIntegration::SetRedirectURI(std::string const& redirectURI) {
    SdkBackend::SetRedirectURI(redirectURI);
}

std::shared_ptr<quillosdk::QuilloClient> QuilloCppSdkIntegration::GetQuilloClient() {
    return SdkBackend::GetClient();
}

void QuilloCppSdkIntegration::SignIn(std::function<void(bool)> const& onLoggedInChanged) {
    SdkBackend::Instance().SignIn(onLoggedInChanged, nullptr);
}

void QuilloCppSdkIntegration::SignOut() {
    SdkBackend::Instance().SignOut();
}

void QuilloCppSdkIntegration::GetCurrentUser(
    std::function<void(std::shared_ptr<QuilloUser> const&)> const& callback) {
    SdkBackend::Instance().GetCurrentUser(callback);
}

}  // namespace model
}  // namespace quillomoxui
