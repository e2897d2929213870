#include "quillosdk/Assets.h"

#include <utility>

#include "quillosdk/AnswerReader.h"
#include "quillosdk/Deliver.h"
#include "quillosdk/PathTo.h"
#include "quillosdk/Session.h"

namespace quillosdk {

Assets::Assets(std::shared_ptr<Session> session) : session(std::move(session)) {}

moxcore::async::Future<std::shared_ptr<GetChildAssetsResponse>> Assets::GetChildAssets(
    GetChildAssetsRequest const& request) {
    return Fetch<GetChildAssetsResponse>(
        *session, {.method = "GET", .url = PathTo("/v1/folders/", request.folderID, "/children")},
        {quillocommon::Step::ReadLocations, "read what lies in a folder", true}, &ReadAssets);
}

}  // namespace quillosdk
