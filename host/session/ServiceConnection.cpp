#include "host/session/ServiceConnection.h"

#include <utility>

#include "host/state/HostFiles.h"
#include "moxcore/config/Localizer.h"
#include "quilloauth/AuthManager.h"
#include "quillocommon/ServiceAddress.h"
#include "quillohostkit/process/Failure.h"
#include "quillohostkit/process/OnMainThread.h"

namespace quillohost {

using moxcore::config::Text;

ServiceConnection::ServiceConnection(Options const& options, quillohostkit::KeyLocks const& locks,
                                     Hooks newHooks)
    : hooks(std::move(newHooks)) {
    if (options.insecureHttp) quillocommon::AllowInsecureHttp();
    if (options.service) {
        Use(*options.service);
        return;
    }
    embeddedData = options.data ? *options.data / "service" : HostDataFile("service");
    quillohostkit::OnMainThread(locks.Take("service", hooks.onWait), token,
                                [this](auto const& taken) {
                                    try {
                                        lock = taken.Get();
                                        Start();
                                    } catch (...) {
                                        ready.SetException(std::current_exception());
                                    }
                                });
}

ServiceConnection::~ServiceConnection() {
    // The host's own service ends here, and must receive a sign-out before that.
    if (embedded) quilloauth::jwt::AwaitSignOuts();
}

void ServiceConnection::Start() {
    embedded = std::make_unique<EmbeddedService>(embeddedData, [this](auto const& reason) {
        hooks.onGone(std::make_exception_ptr(
            quillohostkit::Failure(quillohostkit::FailureKind::SignIn,
                                   Text("$$$/Vistrel/quillo-host/Service/Ended=The host's own "
                                        "quillo-service has ended: {reason}",
                                        {{"reason", reason}}))));
    });
    quillohostkit::OnMainThread(embedded->Address(), token, [this](auto const& started) {
        try {
            Use(started.Get());
        } catch (...) {
            ready.SetException(std::current_exception());
        }
    });
}

void ServiceConnection::Use(std::string const& named) {
    if (!quillocommon::SetServiceAddress(named)) {
        if (quillocommon::IsInsecureServiceAddress(named))
            throw quillohostkit::Failure(
                quillohostkit::FailureKind::Usage,
                Text("$$$/Vistrel/quillo-host/Service/Insecure=--service \"{address}\" is plain "
                     "http to another machine, where everybody on the way can read the sign-in and "
                     "the movies; use https, or allow it with --insecure-http.",
                     {{"address", named}}));
        throw quillohostkit::Failure(
            quillohostkit::FailureKind::Usage,
            Text("$$$/Vistrel/quillo-host/Service/NoAddress=--service \"{address}\" is no address "
                 "of a service; write it like http://127.0.0.1:8080, without a path.",
                 {{"address", named}}));
    }
    address = quillocommon::GetServiceAddress();
    ready.SetValue();
}

std::string ServiceConnection::ServiceName() const {
    return embeddedData.empty() ? address : "embedded";
}

std::string ServiceConnection::HowToOpen(std::string const& link) const {
    if (embeddedData.empty()) return "";
    auto const command = EmbeddedService::CommandLine(embeddedData);
    if (link.starts_with(address + "/"))
        return Text(
            "$$$/Vistrel/quillo-host/Service/HowToOpen=The link opens while the service runs: "
            "{command}",
            {{"command", command}});
    auto const formerPort = link.substr(0, link.find("/r/")).substr(link.rfind(':') + 1);
    return Text(
        "$$$/Vistrel/quillo-host/Service/OtherPort=The service could not have its former port "
        "{port}, which the link names; free the port and run: {command} --port {port}",
        {{"port", formerPort}, {"command", command}});
}

}  // namespace quillohost
