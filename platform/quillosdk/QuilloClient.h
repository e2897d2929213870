#pragma once

#include <functional>
#include <memory>
#include <string>

#include "quillocommon/Response.h"
#include "quillosdk/Accounts.h"
#include "quillosdk/Assets.h"
#include "quillosdk/Projects.h"
#include "quillosdk/QuilloConfig.h"
#include "quillosdk/ReviewLinks.h"
#include "quillosdk/TransferManager.h"
#include "quillosdk/Workspaces.h"

namespace quillosdk {

/// The connection of one signed-in user to the service. Requests carry the token last handed over;
/// one that the service rejects (401) makes the client ask for a fresh token, and the request is
/// sent once more when that has come. Requests that are under way keep what they need alive, so a
/// client may be dropped at any time. Any thread.
class QUILLOSERVICES_API QuilloClient {
public:
    /// Asks for a fresh access token, to be handed over by UpdateAccessToken. Called on any thread,
    /// with the token that was rejected; must not block.
    using TokenRefresher = std::function<void(std::string const& rejectedToken)>;

    /// Makes the client that Get returns from now on, still without a token.
    static void Initialize(QuilloConfig const& config, TokenRefresher refresher);

    /// The client made last; null before the first Initialize.
    [[nodiscard]] static std::shared_ptr<QuilloClient> Get();

    /// Called with each token that the service has rejected, before the refresher is called: a
    /// store of tokens must not hand that one out again. One for the process; an empty one
    /// removes it.
    static void SetTokenRejectedHandler(std::function<void(std::string const& token)> handler);

    QuilloClient(QuilloConfig const& config, TokenRefresher refresher);

    /// Takes the token for the requests from now on. Fails for one of fewer than 16 characters and
    /// for one that could not stand in a header; the client then keeps the one it had.
    quillocommon::Response UpdateAccessToken(std::string const& token);

    [[nodiscard]] Accounts& GetAccounts() { return accounts; }
    [[nodiscard]] Workspaces& GetWorkspaces() { return workspaces; }
    [[nodiscard]] Projects& GetProjects() { return projects; }
    [[nodiscard]] Assets& GetAssets() { return assets; }
    [[nodiscard]] ReviewLinks& GetReviewLinks() { return reviewLinks; }
    [[nodiscard]] TransferManager& GetTransferManager() { return transferManager; }

private:
    std::shared_ptr<Session> session;
    Accounts accounts;
    Workspaces workspaces;
    Projects projects;
    Assets assets;
    ReviewLinks reviewLinks;
    TransferManager transferManager;
};

}  // namespace quillosdk
