#include <nlohmann/json.hpp>

#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/NodeJson.h"
#include "service/routes/Routes.h"
#include "service/store/Locations.h"

namespace quilloservice {

using nlohmann::json;

namespace {

json InJson(Location const& location) {
    if (location.node.kind == kind::Folder) return TypedJson(location.node);
    json object = NamedJson(location.node);
    if (location.root) object["root_folder"] = TypedJson(*location.root);
    return object;
}

/// The locations of one kind, as the addresses and answers name them.
struct LocationKind {
    std::string_view kind;
    std::string path;       ///< of one such location
    std::string addPath;    ///< where new ones are made
    char const* answerKey;  ///< the member of the answer
};

std::vector<LocationKind> const& Kinds() {
    static std::vector<LocationKind> const kinds = {
        {kind::Account, "/v1/accounts/{id}", "/v1/accounts", "account"},
        {kind::Workspace, "/v1/workspaces/{id}", "/v1/accounts/{id}/workspaces", "workspace"},
        {kind::Project, "/v1/projects/{id}", "/v1/workspaces/{id}/projects", "project"},
        {kind::Folder, "/v1/folders/{id}", "/v1/folders/{id}/children", "asset"},
    };
    return kinds;
}

}  // namespace

void AddLocationChangeRoutes(Api& api, Locations& locations) {
    for (LocationKind const& each : Kinds()) {
        auto answer = [key = each.answerKey](Call& call, int status, Location const& location) {
            call.Answer(status, {{key, InJson(location)}});
        };
        api.Add({"POST", each.addPath,
                 [&locations, answer, kind = each.kind](Call& call) {
                     std::string const& user = call.identity.user;
                     std::string name = call.ReadName();
                     answer(call, 201,
                            kind == kind::Account ? locations.AddAccount(user, name)
                                                  : locations.Add(user, kind, call.ids[0], name));
                 },
                 RequestKind::Changes});
        api.Add({"PATCH", each.path,
                 [&locations, answer, kind = each.kind](Call& call) {
                     answer(
                         call, 200,
                         locations.Rename(call.identity.user, kind, call.ids[0], call.ReadName()));
                 },
                 RequestKind::Changes});
        api.Add({"DELETE", each.path,
                 [&locations, kind = each.kind](Call& call) {
                     locations.Remove(call.identity.user, kind, call.ids[0]);
                     call.response.status = 204;
                 },
                 RequestKind::Changes});
    }
}

}  // namespace quilloservice
