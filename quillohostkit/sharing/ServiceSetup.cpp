#include "quillohostkit/sharing/ServiceSetup.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>

#include "moxcore/config/Localizer.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "quilloauth/Browser.h"
#include "quillocommon/ServiceAddress.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/sharing/Sharing.h"
#include "quillohostkit/state/OwnFile.h"
#include "quillohostkit/widgets/QtText.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

using moxcore::string::AsciiToUTF16;
using moxcore::string::UTF8to16;

constexpr char kAddressKey[] = "Quillo/service";
constexpr char kRedirectUri[] = "http://127.0.0.1/signed-in";

ServiceSettings settings;
std::string serviceName;  // of the first address

/// Why the library does not take the address.
QString Complaint(std::string const& address) {
    bool const isInsecure = quillocommon::IsInsecureServiceAddress(address);
    return QtText(
        isInsecure
            ? "$$$/Vistrel/quillohostkit/Service/Insecure=The address of the review service, "
              "\"{address}\", is plain http to another machine, where everybody on the way can "
              "read the sign-in and the movies; use https."
            : "$$$/Vistrel/quillohostkit/Service/NoAddress=The address of the review service, "
              "\"{address}\", is none; write it like https://review.example, without a path.",
        {{"address", address}});
}

/// From the host's own settings.
std::string StoredAddress() {
    if (QCoreApplication::organizationName().isEmpty()) return {};
    return QSettings().value(kAddressKey).toString().toStdString();
}

void NameApplication() {
    auto const name = QCoreApplication::applicationName();
    if (!name.isEmpty())
        moxcore::filesupport::commondirs::SetApplicationName(
            UTF8to16(QString(name).replace('/', '-').toStdString()));
    auto const clientID = settings.clientID.isEmpty() ? name : settings.clientID;
    quillomoxui::InitQuilloCppSdk(UTF8to16(clientID.toStdString()), AsciiToUTF16(kRedirectUri));
}

void SetBrowser(QString const& browser) {
    if (browser.isEmpty()) return quilloauth::SetBrowserOpener({});
    quilloauth::SetBrowserOpener(
        [program = browser.toStdString()](auto const& url, auto const& onFailure) {
            quilloauth::OpenWithProgram(program, url, onFailure);
        });
}

}  // namespace

QString SetServiceSettings(ServiceSettings const& newSettings) {
    auto const address = newSettings.address.toStdString();
    if (!address.empty() && !quillocommon::SetServiceAddress(address)) return Complaint(address);
    settings = newSettings;
    SetBrowser(settings.browser);
    if (auto const sharing = Sharing::Existing()) sharing->Resume();
    return {};
}

ServiceSettings const& CurrentSettings() {
    return settings;
}

bool ConnectService() {
    if (!serviceName.empty()) return true;
    if (quillocommon::GetServiceAddress().empty())
        if (auto const stored = StoredAddress();
            !stored.empty() && !quillocommon::SetServiceAddress(stored))
            throw Failure(FailureKind::Usage, Complaint(stored).toStdString());
    auto const address = quillocommon::GetServiceAddress();
    if (address.empty()) return false;
    serviceName = settings.name.isEmpty() ? address : settings.name.toStdString();
    NameApplication();
    return true;
}

std::string ServiceName() {
    return serviceName;
}

std::filesystem::path OwnDataFile(char const* name) {
    auto const directory = settings.dataDirectory.isEmpty()
                               ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                               : settings.dataDirectory;
    if (!QDir().mkpath(directory))
        throw Failure(
            FailureKind::Other,
            Text(
                "$$$/Vistrel/quillohostkit/State/NoDirectory=Cannot make the directory \"{file}\".",
                {{"file", directory.toStdString()}}));
    auto file = std::filesystem::path(QFile::encodeName(directory).toStdString()) / name;
    MakeOwnFile(file);
    return file;
}

}  // namespace quillohostkit
