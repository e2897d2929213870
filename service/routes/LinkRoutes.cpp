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

/// Where the link leads: to the service under the name by which this client reached it.
std::string LinkUrl(Call const& call, std::string const& address, std::string const& link) {
    std::string const& host = call.request.host;
    return (host.empty() ? address : "http://" + host) + "/r/" + link;
}

std::vector<std::string> ReadAssetIds(json const& body) {
    auto ids = body.find("asset_ids");
    if (ids == body.end() || !ids->is_array() ||
        !std::all_of(ids->begin(), ids->end(), [](json const& id) { return id.is_string(); })) {
        throw ApiError::BadRequest("\"asset_ids\" is missing or no array of strings.");
    }
    return ids->get<std::vector<std::string>>();
}

}  // namespace

void AddLinkRoutes(Api& api, ReviewLinks& links, std::string const& address) {
    api.Add({"POST", "/v1/projects/{id}/review-links",
             [&links, address](Call& call) {
                 auto key = call.UuidHeader("Idempotency-Key");
                 Node link = links.Create(call.identity.user, call.ids[0], call.ReadName(), key);
                 call.Answer(201, {{"review_link",
                                    {{"id", link.id},
                                     {"name", link.name},
                                     {"url", LinkUrl(call, address, link.id)}}}});
             },
             RequestKind::Links});
    api.Add({"POST", "/v1/review-links/{id}/assets",
             [&links](Call& call) {
                 auto assets = ReadAssetIds(call.ReadJson());
                 call.Answer(200,
                             {{"added", links.AddAssets(call.identity.user, call.ids[0], assets)}});
             },
             RequestKind::Links});
}

}  // namespace quilloservice
