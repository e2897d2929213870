#include <algorithm>
#include <nlohmann/json.hpp>

#include "service/Api.h"
#include "service/ApiError.h"
#include "service/Call.h"
#include "service/Nodes.h"
#include "service/ReviewLinks.h"
#include "service/Routes.h"

namespace quilloservice {

using nlohmann::json;

namespace {

/// Whether `text` is a host with an optional port, and nothing that could turn a link elsewhere.
bool IsHost(std::string_view text) {
    return !text.empty() && text.size() <= 255 && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '-' || c == ':' || c == '[' || c == ']';
    });
}

/// Where the link leads: to the service under the name by which this client reached it.
std::string LinkUrl(const Call& call, const std::string& address, const std::string& link) {
    std::string host = call.Header("Host").value_or("");
    return (IsHost(host) ? "http://" + host : address) + "/r/" + link;
}

std::vector<std::string> ReadAssetIds(const json& body) {
    auto ids = body.find("asset_ids");
    if (ids == body.end() || !ids->is_array() ||
        !std::all_of(ids->begin(), ids->end(), [](const json& id) { return id.is_string(); })) {
        throw ApiError::BadRequest("\"asset_ids\" is missing or no array of strings.");
    }
    return ids->get<std::vector<std::string>>();
}

}  // namespace

void AddLinkRoutes(Api& api, ReviewLinks& links, const std::string& address) {
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
