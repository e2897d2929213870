#pragma once

#include <memory>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Records.h"
#include "quillosdk/ResponseWith.h"

namespace quillosdk {

class Session;

struct GetChildAssetsRequest {
    explicit GetChildAssetsRequest(quillocommon::Guid const& folderID) : folderID(folderID) {}
    quillocommon::Guid folderID;
};

class GetChildAssetsResponse : public ResponseWith<std::vector<Asset>> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] std::vector<Asset> const& GetChildAssetsObject() const { return content; }
};

/// The contents of a folder. The service's answer reaches the caller as it is, a refusal for too
/// many requests included: pacing is the caller's. An answer that cannot be read fails the future.
/// Answers come on the transport's thread. Any thread.
class QUILLOSERVICES_API Assets {
public:
    explicit Assets(std::shared_ptr<Session> session);

    moxcore::async::Future<std::shared_ptr<GetChildAssetsResponse>> GetChildAssets(
        GetChildAssetsRequest const& request);

private:
    std::shared_ptr<Session> session;
};

}  // namespace quillosdk
