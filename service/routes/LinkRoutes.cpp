#include <algorithm>
#include <nlohmann/json.hpp>

#include "service/base/ApiError.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/Routes.h"
#include "service/store/Nodes.h"
#include "service/store/ReviewLinks.h"

namespace quilloservice {

using nlohmann::json;

namespace {

/// `address`: the service's, if the client does not say how it reaches the service.
std::string LinkUrl(Call const& call, std::string const& address, NodeId const& link) {
    std::string const own = call.GetOwnAddress();
    return (own.empty() ? address : own) + "/r/" + link.GetText();
}

/// The member "asset_ids" of the body. A malformed ID becomes the nil ID, which no asset has.
std::vector<AssetId> ReadAssetIds(json const& body) {
    auto ids = body.find("asset_ids");
    if (ids == body.end() || !ids->is_array() ||
        !std::all_of(ids->begin(), ids->end(), [](json const& id) { return id.is_string(); })) {
        throw ApiError::BadRequest("\"asset_ids\" is missing or no array of strings.");
    }
    std::vector<AssetId> assets;
    for (json const& id : *ids)
        assets.push_back(AssetId::ParseOrNil(id.get_ref<std::string const&>()));
    return assets;
}

}  // namespace

void AddLinkRoutes(Api& api, ReviewLinks& links, std::string const& address) {
    api.Add({"POST", "/v1/projects/{id}/review-links",
             [&links, address](Call& call) {
                 auto key = call.GetIdempotencyKey();
                 Node link = links.Create(call.identity.user, call.GetId<ProjectId>(0),
                                          call.ReadName(), key);
                 call.Respond(201, {{"review_link",
                                     {{"id", link.id},
                                      {"name", link.name},
                                      {"url", LinkUrl(call, address, link.id)}}}});
             },
             RequestKind::Links});
    api.Add({"POST", "/v1/review-links/{id}/assets",
             [&links](Call& call) {
                 auto assets = ReadAssetIds(call.ReadJson());
                 auto added = links.AddAssets(call.identity.user, call.GetId<LinkId>(0), assets);
                 call.Respond(200, {{"added", added}});
             },
             RequestKind::Links});
}

}  // namespace quilloservice
