#include "quillosdk/QuilloClient.h"

#include <mutex>
#include <utility>

#include "moxcore/utility/NoDestructor.h"
#include "quillosdk/Session.h"

namespace quillosdk {
namespace {

struct Current {
    std::mutex mutex;
    std::shared_ptr<QuilloClient> client;  // guarded by mutex
};

/// Never destroyed: it is still asked for while the process ends.
Current& TheCurrent() {
    static moxcore::utility::NoDestructor<Current> current;
    return *current;
}

}  // namespace

void QuilloClient::Initialize(QuilloConfig const& config, TokenRefresher refresher) {
    auto client = std::make_shared<QuilloClient>(config, std::move(refresher));
    auto& current = TheCurrent();
    std::lock_guard lock(current.mutex);
    current.client.swap(client);
}

std::shared_ptr<QuilloClient> QuilloClient::Get() {
    auto& current = TheCurrent();
    std::lock_guard lock(current.mutex);
    return current.client;
}

void QuilloClient::SetTokenRejectedHandler(std::function<void(std::string const& token)> handler) {
    Session::SetTokenRejectedHandler(std::move(handler));
}

QuilloClient::QuilloClient(QuilloConfig const& config, TokenRefresher refresher)
    : session(std::make_shared<Session>(config.ClientID(), std::move(refresher))),
      accounts(session),
      workspaces(session),
      projects(session),
      assets(session),
      reviewLinks(session),
      transferManager(session) {}

quillocommon::Response QuilloClient::UpdateAccessToken(std::string const& token) {
    return session->UpdateAccessToken(token);
}

}  // namespace quillosdk
